// The questions after a snapshot's name: of one to be captured, and of one to be read.
#pragma once

#include "shell/dialog.h"

namespace delvane {

class CNewSnapshotDlg : public CDialog {
public:
    CNewSnapshotDlg();

    int m_bCompareAfter = 0;  // read by the caller after OK
    CString m_strName;
    int m_bCompareEnabled = 1;  // whether it can be asked for; set by the caller

protected:
    void DoDataExchange(bool save) override;
    void OnInitDialog() override;
    void OnOK() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;
    void OnMessage(std::uint32_t message, std::uint32_t wParam) override;

private:
    void UpdateOkState();
};

class CLoadSnapshotDlg : public CDialog {
public:
    CLoadSnapshotDlg();

    CString m_strName;  // read by the caller after OK

protected:
    void DoDataExchange(bool save) override;
    void OnInitDialog() override;
    void OnCommand(std::uint32_t id, EControlEvent event) override;
};

}  // namespace delvane
