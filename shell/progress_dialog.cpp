#include "shell/progress_dialog.h"

#include "resources/dialogs.h"

namespace delvane {
namespace {

struct CCounter {
    std::uint32_t m_nField;
    std::atomic<std::uint32_t> CCaptureProgress::*m_count;
};

constexpr CCounter kCounters[] = {
    {kCodeDrives, &CCaptureProgress::m_nDrives},
    {kCodeDirs, &CCaptureProgress::m_nDirs},
    {kCodeFiles, &CCaptureProgress::m_nFiles},
    {kCodeHives, &CCaptureProgress::m_nHives},
    {kCodeKeys, &CCaptureProgress::m_nKeys},
    {kCodeValues, &CCaptureProgress::m_nValues},
    {kCodeExtensions, &CCaptureProgress::m_nExtensions},
};

}  // namespace

CProgressDlg::CProgressDlg() : CDialog(IDD_PROGRESS) {}

// The worker's last act is its last message, so there is nothing left to wait for.
CProgressDlg::~CProgressDlg() {
    if (m_worker.joinable()) m_worker.join();
}

void CProgressDlg::OnInitDialog() {
    for (const CCounter& counter : kCounters)
        GetWindow().SetText(counter.m_nField, "0");
    m_pProgress = std::make_unique<CCaptureProgress>();
    m_pProgress->m_pDialog = &GetWindow();
    m_pSnapshot->m_pProgress = m_pProgress.get();
    // Capture lets nothing out.
    m_worker = std::thread([snapshot = m_pSnapshot] { snapshot->Capture(nullptr); });
}

void CProgressDlg::OnCancel() {
    if (m_pProgress != nullptr) m_pProgress->m_bKeepGoing = false;
}

void CProgressDlg::OnMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t) {
    if (message == kMsgCounted && m_pProgress != nullptr) {
        ShowCounters();
    } else if (message == kMsgEnded) {
        m_pProgress.reset();
        EndDialog(wParam == 0 ? IDOK : IDCANCEL);
    }
}

void CProgressDlg::ShowCounters() {
    for (const CCounter& counter : kCounters) {
        const CString text = std::to_string((*m_pProgress.*counter.m_count).load(std::memory_order_relaxed));
        if (GetWindow().GetText(counter.m_nField) != text) GetWindow().SetText(counter.m_nField, text);
    }
    m_pProgress->m_bUpdatePosted.store(false, std::memory_order_relaxed);
}

}  // namespace delvane
