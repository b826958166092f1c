// A request to end the process while a capture or a save is under way.
#include <array>
#include <csignal>

#include "platform/host.h"

namespace delvane {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_signal = 0;  // the request that came, or 0
bool g_delivered = false;                 // somebody was told of it
std::array<struct sigaction, kSignals.size()> g_before;

void OnSignal(int signal) { g_signal = signal; }

}  // namespace

CInterruptGuard::CInterruptGuard() {
    g_signal = 0;
    g_delivered = false;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &g_before[i]);
        // Who started the program with a signal ignored (nohup) wants it ignored.
        if (g_before[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

CInterruptGuard::~CInterruptGuard() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &g_before[i], nullptr);
    // A request that came when nothing asked any more ends the process now.
    const int pending = g_delivered ? 0 : g_signal;
    g_signal = 0;
    if (pending != 0) std::raise(pending);
}

void ThrowIfInterrupted() {
    if (g_signal == 0) return;
    g_delivered = true;
    throw CInterrupted();
}

}  // namespace delvane
