// The window system as the program sees it. So far: the posted messages of a capture that somebody watches.
#pragma once

#include <cstdint>

namespace delvane {

constexpr std::uint32_t WM_USER = 0x400;

// Something with a message queue of its own, a dialog for instance.
class CMessageTarget {
public:
    virtual ~CMessageTarget() = default;
    // Puts a message at the end of the target's queue and returns at once. Any thread may call it; messages of one
    // thread are handled in the order of the calls.
    virtual void PostMessage(std::uint32_t message, std::uint32_t wParam, std::uint32_t lParam) = 0;
};

}  // namespace delvane
