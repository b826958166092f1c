// A request to end the process while a capture is under way or a file is written.
#include <array>
#include <atomic>
#include <csignal>

#include "platform/host.h"

namespace delvane {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> g_signal = 0;  // the request that came, or 0
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may set it");
bool g_answered = false;  // it became an exception that somebody answers
int g_guards = 0;         // how many live
CInterruptGuard::EOwner g_outermost;
std::array<struct sigaction, kSignals.size()> g_before;

void OnSignal(int signal) { g_signal = signal; }

}  // namespace

CInterruptGuard::CInterruptGuard(EOwner owner) {
    if (g_guards++ != 0) return;
    g_outermost = owner;
    g_signal = 0;
    g_answered = false;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &g_before[i]);
        // Who started the program with a signal ignored (nohup) wants it ignored.
        if (g_before[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

CInterruptGuard::~CInterruptGuard() {
    if (--g_guards != 0) return;
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &g_before[i], nullptr);
    const int pending = g_answered ? 0 : g_signal.load();
    g_signal = 0;
    if (pending != 0) std::raise(pending);
}

void ThrowIfInterrupted() {
    if (g_signal.load(std::memory_order_relaxed) == 0) return;
    g_answered = g_outermost == CInterruptGuard::EOwner::kAnswers;
    throw CInterrupted();
}

}  // namespace delvane
