// A capture on a thread of its own, with its counters and a way to cancel it.
#pragma once

#include <memory>
#include <thread>

#include "shell/dialog.h"
#include "tree/progress.h"
#include "tree/snapshot.h"

namespace delvane {

// Ends with IDOK when the capture ran to its end, else with IDCANCEL. The snapshot is the worker's until its last
// message has been handled; by then it has ended.
class CProgressDlg : public CDialog {
public:
    CProgressDlg() : CDialog(IDD_PROGRESS) {}
    // However the dialog ended: the capture is cancelled, and waited for.
    ~CProgressDlg() override { OnCancel(); }

    CSnapshot* m_pSnapshot = nullptr;               // to capture; set by the creator
    std::unique_ptr<CCaptureProgress> m_pProgress;  // while the capture runs

protected:
    void OnInitDialog() override;
    void OnOK() override {}  // only the worker's end ends the dialog
    void OnCancel() final;
    void OnMessage(std::uint32_t message, std::uint32_t wParam) override;

private:
    void ShowCounters();

    std::jthread m_worker;  // the last member: it ends before what it works on
};

}  // namespace delvane
