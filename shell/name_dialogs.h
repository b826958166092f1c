// The questions after a snapshot's name: of one to be captured, and of one to be read.
#pragma once

#include "shell/dialog.h"

namespace delvane {

class CNewSnapshotDlg : public CDialog {
public:
    CNewSnapshotDlg() : CDialog(IDD_NEW_SNAPSHOT) {}

    bool m_bCompareAfter = false;  // read by the caller after OK
    CString m_strName;
    bool m_bCompareEnabled = true;  // whether it can be asked for; set by the caller

protected:
    void OnInitDialog() override;
    void OnOK() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;
    void OnMessage(std::uint32_t message, std::uint32_t wParam) override;

private:
    void UpdateOkState();
};

class CLoadSnapshotDlg : public CDialog {
public:
    CLoadSnapshotDlg() : CDialog(IDD_LOAD_SNAPSHOT) {}

    CString m_strName;  // read by the caller after OK

protected:
    void OnInitDialog() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;
};

}  // namespace delvane
