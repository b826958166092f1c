// How far a long step of an unattended run is: a line on the terminal that is written over.
#pragma once

#include <chrono>
#include <string_view>

#include "tree/progress.h"

namespace delvane {

// The line appears when a step has lasted a second, follows twice a second, and is gone when this dies. Where standard
// error is no terminal nothing is written. All happens on the thread that counts, as it counts.
class CCounterLine : public CMessageTarget {
public:
    CCounterLine();
    ~CCounterLine() override;
    CCounterLine(const CCounterLine&) = delete;
    CCounterLine& operator=(const CCounterLine&) = delete;

    // For a capture; null where there is no terminal.
    CCaptureProgress* GetProgress() { return m_bTerminal ? &m_progress : nullptr; }
    // For a comparison.
    void CountCompared(std::size_t nodes);

    void PostMessage(std::uint32_t message, std::uint32_t wParam) override;

private:
    bool IsDue();
    void Show(std::string_view text);

    bool m_bTerminal;
    CCaptureProgress m_progress;
    std::uint64_t m_nCompared = 0;
    std::chrono::steady_clock::time_point m_due;  // when the line is written next
    std::size_t m_nShown = 0;                     // the length of what stands there
};

}  // namespace delvane
