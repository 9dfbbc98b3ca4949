#include "interrupt.h"

#include <atomic>
#include <csignal>

#include "failure.h"

namespace sonivex_tool {
namespace {

// A signal may reach any thread of the program, a decoder's too, so it is not only the handler's business.
std::atomic<int> gPendingSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "else a signal handler must not touch it");

}  // namespace

void installSignalHandlers() {
    struct sigaction remember {};
    remember.sa_handler = [](int signal) { gPendingSignal = signal; };
    sigemptyset(&remember.sa_mask);
    // No SA_RESTART: a read that waits for a slow source returns, and the mark is seen.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &remember, nullptr);

    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    for (const int signal : {SIGXFSZ, SIGPIPE}) sigaction(signal, &ignore, nullptr);
}

int pendingSignal() {
    return gPendingSignal;
}

void throwIfInterrupted() {
    const int signal = pendingSignal();
    if (signal == 0) return;
    throw Failure(signal == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated,
                  "interrupted, nothing is kept");
}

}  // namespace sonivex_tool
