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

// The flag is atomic rather than a volatile sig_atomic_t: the system may deliver a signal to any thread, a
// decoder's included, while another thread reads the flag.
std::atomic<int> g_pending_signal = 0;
std::array<char, PATH_MAX> g_path_to_remove;
std::atomic<bool> g_has_path_to_remove = false;
std::atomic<void (*)()> g_on_second_signal = nullptr;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free &&
                  std::atomic<void (*)()>::is_always_lock_free,
              "a signal handler may only use lock-free atomics");

ExitCode exitCodeOf(int signal) {
    return signal == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated;
}

// Calls only async-signal-safe functions.
void onSignal(int signal) {
    if (g_pending_signal.exchange(signal) == 0) return;
    cleanUpAtOnce();
    _exit(static_cast<int>(exitCodeOf(signal)));
}

}  // namespace

void installSignalHandlers() {
    struct sigaction remember {};
    remember.sa_handler = onSignal;
    sigemptyset(&remember.sa_mask);
    // No SA_RESTART: a read that waits for a slow source returns, and its caller sees the flag.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &remember, nullptr);

    struct sigaction wake {};
    wake.sa_handler = [](int /*signal*/) {};
    sigemptyset(&wake.sa_mask);
    sigaction(SIGUSR1, &wake, nullptr);

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

void onSecondSignal(void (*function)()) {
    g_on_second_signal = function;
}

void cleanUpAtOnce() {
    if (g_has_path_to_remove) (void)unlink(g_path_to_remove.data());
    if (void (*const function)() = g_on_second_signal; function != nullptr) function();
}

int pendingSignal() {
    return g_pending_signal;
}

void nudge(std::thread& thread) {
    pthread_kill(thread.native_handle(), SIGUSR1);
}

void throwIfInterrupted() {
    const int signal = pendingSignal();
    if (signal == 0) return;
    throw Failure(exitCodeOf(signal), "interrupted; no result was written");
}

}  // namespace sonivex_tool
