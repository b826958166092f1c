// The progress record of a capture: what it has counted, and whether it may go on.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/toolkit.h"

namespace delvane {

// Posted by a capture to the dialog that watches it.
constexpr std::uint32_t kMsgCounted = WM_USER + 1;  // wParam: the code of the counter that was raised
constexpr std::uint32_t kMsgEnded = WM_USER + 2;    // wParam: 0 if the capture ran to its end, else 1

// The codes of the counters are the ids of the fields that show them.
constexpr std::uint32_t kCodeDrives = 1000;
constexpr std::uint32_t kCodeDirs = 1001;
constexpr std::uint32_t kCodeFiles = 1002;
constexpr std::uint32_t kCodeExtensions = 1007;
constexpr std::uint32_t kCodeHives = 1009;
constexpr std::uint32_t kCodeKeys = 1010;
constexpr std::uint32_t kCodeValues = 1011;

// Ends a cancelled capture: thrown by the test below, caught by Capture of CSnapshot.
class CUserException {};

// Shared by the thread that captures, which counts, and the one that watches, which reads and cancels. Nothing is
// ordered by these fields, so relaxed access is enough. A capture is given a null pointer when nobody watches.
struct CCaptureProgress {
    std::atomic<std::uint32_t> m_nFiles = 0;
    std::atomic<std::uint32_t> m_nDirs = 0;
    std::atomic<std::uint32_t> m_nDrives = 0;
    std::atomic<std::uint32_t> m_nExtensions = 0;
    std::atomic<std::uint32_t> m_nHives = 0;
    std::atomic<std::uint32_t> m_nKeys = 0;
    std::atomic<std::uint32_t> m_nValues = 0;
    std::atomic<bool> m_bUpdatePosted = false;  // an update is on its way and has not been handled
    std::atomic<bool> m_bKeepGoing = true;
    bool m_bForgives = true;              // a key that fails part way costs itself and not the capture
    CMessageTarget* m_pDialog = nullptr;  // outlives the capture; null when nobody watches
};

// Raises a counter and tells the dialog, unless it has been told and has not looked yet.
inline void Count(CCaptureProgress* progress, std::atomic<std::uint32_t> CCaptureProgress::*counter,
                  std::uint32_t code) {
    if (progress == nullptr) return;
    (progress->*counter).fetch_add(1, std::memory_order_relaxed);
    if (progress->m_pDialog != nullptr && !progress->m_bUpdatePosted.load(std::memory_order_relaxed)) {
        progress->m_bUpdatePosted.store(true, std::memory_order_relaxed);
        progress->m_pDialog->PostMessage(kMsgCounted, code);
    }
}

inline void ThrowIfCancelled(const CCaptureProgress* progress) {
    if (progress != nullptr && !progress->m_bKeepGoing.load(std::memory_order_relaxed)) throw CUserException();
}

}  // namespace delvane
