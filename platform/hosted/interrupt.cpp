// A request to end the process while a capture or a save is under way.
#include <array>
#include <csignal>

#include "platform/hosted/own_file.h"

namespace delvane {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_interrupted = 0;
std::array<struct sigaction, kSignals.size()> g_before;

void OnSignal(int) { g_interrupted = 1; }

}  // namespace

CInterruptGuard::CInterruptGuard() {
    g_interrupted = 0;
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
    g_interrupted = 0;
}

void ThrowIfInterrupted() {
    if (g_interrupted != 0) throw CInterrupted();
}

}  // namespace delvane
