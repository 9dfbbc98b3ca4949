#include "real_time/traps/real_time_section.h"

#include <execinfo.h>
#include <linux/prctl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// The functions of the sanitizer's run-time library, which has no header of its own.
extern "C" {
void __rtsan_realtime_enter();
void __rtsan_realtime_exit();
void __rtsan_off();
void __rtsan_on();
}

namespace test {
namespace {

// The kernel reads the thread's selector at each of its system calls.
thread_local volatile char selector = SYSCALL_DISPATCH_FILTER_ALLOW;
thread_local bool is_inside = false;
thread_local bool is_paused = false;

void writeText(const char* text, int length) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, static_cast<std::size_t>(length));
}

// Handles SIGSYS, by which the kernel reports a system call instead of making it.
void reportSystemCall(int /*signal*/, siginfo_t* info, void* /*context*/) {
    selector = SYSCALL_DISPATCH_FILTER_ALLOW;
    __rtsan_off();
    char line[100];
    const int length =
        std::snprintf(line, sizeof line, "Real-time violation: system call %d in a section. Stack trace:\n",
                      info->si_syscall);
    writeText(line, length);
    constexpr int kDeepestStack = 40;
    void* stack[kDeepestStack];
    backtrace_symbols_fd(stack, backtrace(stack, kDeepestStack), STDERR_FILENO);
    _exit(kTrapExitCode);
}

int dispatchSystemCalls(unsigned long mode, volatile char* byte) {
    constexpr unsigned long kNoExemptCode = 0;
    return prctl(PR_SET_SYSCALL_USER_DISPATCH, mode, kNoExemptCode, kNoExemptCode, byte);
}

// Installs the handler, and loads what the reports need, which allocates.
bool prepareTraps() {
    struct sigaction action {};
    action.sa_sigaction = &reportSystemCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    if (sigaction(SIGSYS, &action, nullptr) != 0) return false;
    void* here = nullptr;
    backtrace(&here, 1);
    const bool is_possible = dispatchSystemCalls(PR_SYS_DISPATCH_ON, &selector) == 0;
    if (is_possible) dispatchSystemCalls(PR_SYS_DISPATCH_OFF, nullptr);
    return is_possible;
}

}  // namespace

bool canTrapSystemCalls() {
    static const bool is_possible = prepareTraps();
    return is_possible;
}

RealTimeSection::RealTimeSection() {
    // Not once for each thread: a child of fork has no dispatch.
    if (canTrapSystemCalls()) dispatchSystemCalls(PR_SYS_DISPATCH_ON, &selector);
    __rtsan_realtime_enter();
    is_inside = true;
    selector = SYSCALL_DISPATCH_FILTER_BLOCK;
}

RealTimeSection::~RealTimeSection() {
    selector = SYSCALL_DISPATCH_FILTER_ALLOW;
    is_inside = false;
    __rtsan_realtime_exit();
    // The selector must not outlive the thread.
    if (canTrapSystemCalls()) dispatchSystemCalls(PR_SYS_DISPATCH_OFF, nullptr);
}

bool RealTimeSection::isTrapping() {
    return is_inside && !is_paused;
}

RealTimePause::RealTimePause() : ends_here_(RealTimeSection::isTrapping()) {
    if (!ends_here_) return;
    selector = SYSCALL_DISPATCH_FILTER_ALLOW;
    __rtsan_off();
    is_paused = true;
}

RealTimePause::~RealTimePause() {
    if (!ends_here_) return;
    is_paused = false;
    __rtsan_on();
    selector = SYSCALL_DISPATCH_FILTER_BLOCK;
}

}  // namespace test

// Stands before the sanitizer's own function, which writes its report and ends the program. Both call the
// system, and the other trap must not report that.
#define EXPECT_NOT_REALTIME "_ZN7__rtsan7Context17ExpectNotRealtimeEPKc"
void expectNotRealTime(void* context, const char* function) asm("__wrap_" EXPECT_NOT_REALTIME);
void reallyExpectNotRealTime(void* context, const char* function) asm("__real_" EXPECT_NOT_REALTIME);

void expectNotRealTime(void* context, const char* function) {
    const char before = test::selector;
    test::selector = SYSCALL_DISPATCH_FILTER_ALLOW;
    reallyExpectNotRealTime(context, function);
    test::selector = before;
}
