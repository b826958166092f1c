#include "shell/counter_line.h"

#include <iostream>

#include "platform/host.h"

namespace delvane {

using namespace std::chrono_literals;

CCounterLine::CCounterLine() : m_bTerminal(HasTerminal()), m_due(std::chrono::steady_clock::now() + 1s) {
    m_progress.m_pDialog = this;
    m_progress.m_bForgives = false;  // a capture ends as it does without a terminal
}

CCounterLine::~CCounterLine() {
    if (m_nShown == 0) return;
    Show({});
    std::cerr << '\r' << std::flush;
}

bool CCounterLine::IsDue() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_due) return false;
    m_due = now + 500ms;
    return true;
}

void CCounterLine::PostMessage(std::uint32_t message, std::uint32_t) {
    m_progress.m_bUpdatePosted = false;
    if (message != kMsgCounted || !IsDue()) return;
    const auto text = [](const std::atomic<std::uint32_t>& count, const char* what) {
        return GroupedDecimalText(count.load(std::memory_order_relaxed)) + what;
    };
    Show(text(m_progress.m_nKeys, " keys, ") + text(m_progress.m_nValues, " values, ") +
         text(m_progress.m_nDirs, " directories, ") + text(m_progress.m_nFiles, " files"));
}

void CCounterLine::CountCompared(std::size_t nodes) {
    m_nCompared += nodes;
    if (m_bTerminal && IsDue()) Show(GroupedDecimalText(static_cast<std::int64_t>(m_nCompared)) + " entries compared");
}

// Blanks cover what is left of a longer line.
void CCounterLine::Show(std::string_view text) {
    std::cerr << '\r' << text << CString(m_nShown > text.size() ? m_nShown - text.size() : 0, ' ') << std::flush;
    m_nShown = text.size();
}

}  // namespace delvane
