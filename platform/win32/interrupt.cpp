#include <atomic>

#include "platform/host.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

std::atomic<bool> g_requested = false;
bool g_delivered = false;  // somebody was told of it

// Ctrl+C, Ctrl+Break, the console's close box, the end of the session. Called on a thread of its own; the system ends
// the process when the handler of one of the last two returns, or some seconds later.
BOOL WINAPI OnControl(DWORD event) {
    constexpr DWORD kTimeToEnd = 4000;
    g_requested = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(kTimeToEnd);
    return TRUE;
}

}  // namespace

CInterruptGuard::CInterruptGuard() {
    g_requested = false;
    g_delivered = false;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

CInterruptGuard::~CInterruptGuard() {
    SetConsoleCtrlHandler(OnControl, FALSE);
    // A request that came when nothing asked any more ends the process now.
    constexpr UINT kEndedByControl = 0xC000013A;
    if (g_requested && !g_delivered) ExitProcess(kEndedByControl);
    g_requested = false;
}

void ThrowIfInterrupted() {
    if (!g_requested.load(std::memory_order_relaxed)) return;
    g_delivered = true;
    throw CInterrupted();
}

}  // namespace delvane
