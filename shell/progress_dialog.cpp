#include "shell/progress_dialog.h"

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

void CProgressDlg::OnInitDialog() {
    m_pProgress = std::make_unique<CCaptureProgress>();
    m_pProgress->m_pDialog = &GetWindow();
    ShowCounters();
    // Capture lets nothing out.
    m_worker = std::jthread([snapshot = m_pSnapshot, progress = m_pProgress.get()] { snapshot->Capture(progress); });
}

void CProgressDlg::OnCancel() {
    if (m_pProgress != nullptr) m_pProgress->m_bKeepGoing = false;
}

void CProgressDlg::OnMessage(std::uint32_t message, std::uint32_t wParam) {
    if (message == kMsgCounted && m_pProgress != nullptr) {
        ShowCounters();
    } else if (message == kMsgEnded) {
        m_worker.join();  // that message was its last act
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
