// A capture on a thread of its own, with its counters and a way to cancel it.
#pragma once

#include <memory>
#include <thread>

#include "shell/dialog.h"
#include "tree/progress.h"
#include "tree/snapshot.h"

namespace delvane {

// Ends with IDOK when the capture ran to its end, else with IDCANCEL. The record and the snapshot are the worker's
// until its last message has been handled.
class CProgressDlg : public CDialog {
public:
    CProgressDlg();
    ~CProgressDlg() override;

    CSnapshot* m_pSnapshot = nullptr;               // to capture; set by the creator
    std::unique_ptr<CCaptureProgress> m_pProgress;  // while the capture runs

protected:
    void OnInitDialog() override;
    void OnOK() override {}  // only the worker's end ends the dialog
    void OnCancel() override;
    void OnMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t lParam) override;

private:
    void ShowCounters();

    std::thread m_worker;
};

}  // namespace delvane
