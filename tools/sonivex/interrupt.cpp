#include "interrupt.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>

#include "failure.h"

namespace sonivex_tool {
namespace {

// A signal may reach any thread of the program, a decoder's too, so it is not only the handler's business.
std::atomic<int> g_pending_signal = 0;
std::array<char, PATH_MAX> g_path_to_remove;
std::atomic<bool> g_has_path_to_remove = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "else a signal handler must not touch them");

ExitCode exitCodeOf(int signal) {
    return signal == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated;
}

// Only calls that are safe in a signal handler.
void onSignal(int signal) {
    if (g_pending_signal.exchange(signal) == 0) return;
    if (g_has_path_to_remove) (void)unlink(g_path_to_remove.data());
    _exit(static_cast<int>(exitCodeOf(signal)));
}

}  // namespace

void installSignalHandlers() {
    struct sigaction remember {};
    remember.sa_handler = onSignal;
    sigemptyset(&remember.sa_mask);
    // No SA_RESTART: a read that waits for a slow source returns, and the mark is seen.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &remember, nullptr);

    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    for (const int signal : {SIGXFSZ, SIGPIPE}) sigaction(signal, &ignore, nullptr);
}

void removeOnSecondSignal(const char* path) {
    g_has_path_to_remove = false;
    if (path == nullptr) return;
    const size_t bytes = std::strlen(path) + 1;
    if (bytes > g_path_to_remove.size()) return;
    std::memcpy(g_path_to_remove.data(), path, bytes);
    g_has_path_to_remove = true;
}

int pendingSignal() {
    return g_pending_signal;
}

void throwIfInterrupted() {
    const int signal = pendingSignal();
    if (signal == 0) return;
    throw Failure(exitCodeOf(signal), "interrupted, nothing is kept");
}

}  // namespace sonivex_tool
