#include "real_time/traps/real_time_section.h"

#include <execinfo.h>
#include <linux/prctl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

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

#if defined(__x86_64__)
// Returns from a handler of signals. It has an address of its own, so that the kernel can let its call pass.
asm(R"(
.pushsection .text
.balign 16
returnFromHandler:
    mov $15, %eax
    syscall
returnFromHandlerEnd:
    .balign 16
.popsection
)");
extern "C" const char returnFromHandler[];
extern "C" const char returnFromHandlerEnd[];

// Returns whether a system call reads a clock that the vDSO reads without one. A machine without a vDSO
// makes the call, and the traps must have the same result there.
bool readsSharedClock(const siginfo_t* info, const greg_t* registers) {
    if (info->si_syscall == SYS_gettimeofday || info->si_syscall == SYS_time) return true;
    if (info->si_syscall != SYS_clock_gettime) return false;
    switch (static_cast<clockid_t>(registers[REG_RDI])) {
        case CLOCK_REALTIME:
        case CLOCK_MONOTONIC:
        case CLOCK_MONOTONIC_RAW:
        case CLOCK_REALTIME_COARSE:
        case CLOCK_MONOTONIC_COARSE:
        case CLOCK_BOOTTIME:
        case CLOCK_TAI:
            return true;
        default:
            return false;
    }
}

// Makes the system call that the kernel has only reported.
bool makeIfItReadsSharedClock(const siginfo_t* info, void* context) {
    greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    if (!readsSharedClock(info, registers)) return false;
    const int saved_errno = errno;
    const long result = syscall(info->si_syscall, registers[REG_RDI], registers[REG_RSI]);
    registers[REG_RAX] = result < 0 ? -errno : result;
    errno = saved_errno;
    return true;
}

// As sigaction, but the handler returns through `returnFromHandler`.
bool handleSystemCalls(void (*handler)(int, siginfo_t*, void*)) {
    constexpr unsigned long kHasRestorer = 0x04000000;
    struct {
        void (*handler)(int, siginfo_t*, void*);
        unsigned long flags;
        const char* restorer;
        unsigned long mask;
    } action = {handler, SA_SIGINFO | SA_NODEFER | kHasRestorer, returnFromHandler, 0};
    return syscall(SYS_rt_sigaction, SIGSYS, &action, nullptr, sizeof action.mask) == 0;
}

const auto kExemptCode = reinterpret_cast<unsigned long>(returnFromHandler);
const auto kExemptCode_bytes = static_cast<unsigned long>(returnFromHandlerEnd - returnFromHandler) + 1;
#else
// The kernel reports system calls on x86-64 alone.
bool makeIfItReadsSharedClock(const siginfo_t* /*info*/, void* /*context*/) {
    return false;
}

bool handleSystemCalls(void (* /*handler*/)(int, siginfo_t*, void*)) {
    return false;
}

constexpr unsigned long kExemptCode = 0;
constexpr unsigned long kExemptCode_bytes = 0;
#endif

// Handles SIGSYS, by which the kernel reports a system call instead of making it.
void reportSystemCall(int /*signal*/, siginfo_t* info, void* context) {
    selector = SYSCALL_DISPATCH_FILTER_ALLOW;
    if (makeIfItReadsSharedClock(info, context)) {
        selector = SYSCALL_DISPATCH_FILTER_BLOCK;
        return;
    }
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
    const bool is_on = mode == PR_SYS_DISPATCH_ON;
    return prctl(PR_SET_SYSCALL_USER_DISPATCH, mode, is_on ? kExemptCode : 0, is_on ? kExemptCode_bytes : 0,
                 byte);
}

// Installs the handler, and loads what the reports need, which allocates.
bool prepareTraps() {
    if (!handleSystemCalls(&reportSystemCall)) return false;
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
