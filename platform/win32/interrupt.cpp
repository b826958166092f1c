#include <atomic>

#include "platform/host.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

std::atomic<bool> g_requested = false;
bool g_answered = false;  // it became an exception that somebody answers
int g_guards = 0;         // how many live
CInterruptGuard::EOwner g_outermost;

// Ctrl+C, Ctrl+Break, the console's close box, the end of the session. Called on a thread of its own; the system ends
// the process when the handler of one of the last two returns, or some seconds later.
BOOL WINAPI OnControl(DWORD event) {
    constexpr DWORD kTimeToEnd = 4000;
    g_requested = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(kTimeToEnd);
    return TRUE;
}

}  // namespace

CInterruptGuard::CInterruptGuard(EOwner owner) {
    if (g_guards++ != 0) return;
    g_outermost = owner;
    g_requested = false;
    g_answered = false;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

CInterruptGuard::~CInterruptGuard() {
    if (--g_guards != 0) return;
    SetConsoleCtrlHandler(OnControl, FALSE);
    constexpr UINT kEndedByControl = 0xC000013A;
    if (g_requested && !g_answered) ExitProcess(kEndedByControl);
    g_requested = false;
}

void ThrowIfInterrupted() {
    if (!g_requested.load(std::memory_order_relaxed)) return;
    g_answered = g_outermost == CInterruptGuard::EOwner::kAnswers;
    throw CInterrupted();
}

}  // namespace delvane
