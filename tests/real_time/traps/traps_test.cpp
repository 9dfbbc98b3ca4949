// The traps themselves: whatever a real-time thread must not do ends the program.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>

extern "C" {
#include <libavutil/mem.h>
}

#include "real_time/traps/real_time_section.h"

namespace {

using test::RealTimePause;
using test::RealTimeSection;

// Does `work` in a section of a child process, which must end in the trap with this report.
#define EXPECT_TRAPPED(work, report)           \
    EXPECT_EXIT(                               \
        {                                      \
            {                                  \
                const RealTimeSection section; \
                work;                          \
            }                                  \
            _exit(0);                          \
        },                                     \
        testing::ExitedWithCode(test::kTrapExitCode), report)

// Keeps the compiler from leaving an allocation out.
void use(void* memory) {
    asm volatile("" : : "r"(memory) : "memory");
}

TEST(RealTimeTraps, AllocationsAreTrapped) {
    EXPECT_TRAPPED(use(std::malloc(10)), "malloc");
    EXPECT_TRAPPED(use(std::calloc(1, 10)), "calloc");
    EXPECT_TRAPPED(use(std::aligned_alloc(64, 64)), "aligned_alloc");
    EXPECT_TRAPPED(use(::operator new(10)), "malloc");
    EXPECT_TRAPPED(use(av_malloc(10)), "posix_memalign");
    void* const memory = std::malloc(10);
    EXPECT_TRAPPED(std::free(memory), "free");
    EXPECT_TRAPPED(use(std::realloc(memory, 20)), "realloc");
    std::free(memory);
}

TEST(RealTimeTraps, LocksAreTrapped) {
    std::mutex mutex;
    EXPECT_TRAPPED(mutex.lock(), "pthread_mutex_lock");
    std::shared_mutex shared;
    EXPECT_TRAPPED(shared.lock_shared(), "pthread_rwlock_rdlock");
    EXPECT_TRAPPED(shared.lock(), "pthread_rwlock_wrlock");
    std::condition_variable changed;
    EXPECT_TRAPPED(changed.notify_one(), "pthread_cond_signal");
    std::unique_lock lock(mutex);
    EXPECT_TRAPPED(lock.unlock(), "pthread_mutex_unlock");
    EXPECT_TRAPPED(changed.wait(lock), "pthread_cond_wait");
}

TEST(RealTimeTraps, ThreadsAndSleepAreTrapped) {
    EXPECT_TRAPPED(std::thread([] {}).join(), "malloc");
    EXPECT_TRAPPED(usleep(1), "usleep");
    if (test::canTrapSystemCalls()) {
        EXPECT_TRAPPED(std::this_thread::sleep_for(std::chrono::nanoseconds(1)),
                       "nanosleep|system call " + std::to_string(SYS_clock_nanosleep));
        EXPECT_TRAPPED(std::this_thread::yield(), "system call " + std::to_string(SYS_sched_yield));
    }
}

TEST(RealTimeTraps, SystemCallsAreTrapped) {
    if (!test::canTrapSystemCalls()) GTEST_SKIP() << "this kernel reports no system calls";
    EXPECT_TRAPPED((void)!write(STDERR_FILENO, "x", 1), "system call " + std::to_string(SYS_write));
    EXPECT_TRAPPED(getppid(), "system call " + std::to_string(SYS_getppid));
    EXPECT_TRAPPED(syscall(SYS_futex, nullptr, 0, 0, nullptr, nullptr, 0),
                   "system call " + std::to_string(SYS_futex));
    EXPECT_TRAPPED(use(mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)),
                   "system call " + std::to_string(SYS_mmap));
}

TEST(RealTimeTraps, ClocksOfTheMachineAreNotTrappedAndThoseOfThreadsAre) {
    timespec time{};
    long result = -1;
    timespec direct{};
    long direct_result = -1;
    long wrong_result = 0;
    {
        const RealTimeSection section;
        result = clock_gettime(CLOCK_MONOTONIC, &time);
        // As the C library reads a clock where there is no vDSO.
        direct_result = syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &direct);
        wrong_result = syscall(SYS_clock_gettime, CLOCK_MONOTONIC, 1L);
    }
    EXPECT_EQ(result, 0);
    EXPECT_GT(time.tv_sec + time.tv_nsec, 0);
    EXPECT_EQ(direct_result, 0);
    EXPECT_GE(direct.tv_sec, time.tv_sec);
    EXPECT_EQ(wrong_result, -1) << "the call must have its own result";
    if (!test::canTrapSystemCalls()) return;
    const std::string report = "system call " + std::to_string(SYS_clock_gettime);
    EXPECT_TRAPPED(syscall(SYS_clock_gettime, CLOCK_THREAD_CPUTIME_ID, &time), report);
    EXPECT_TRAPPED(syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time); getppid(), "system call");
}

TEST(RealTimeTraps, TheProgramHasNoVdsoWhereItShallHaveNone) {
    const bool shall_have_none = std::getenv("SONIVEX_WITHOUT_VDSO") != nullptr;
    EXPECT_TRUE(!shall_have_none || getauxval(AT_SYSINFO_EHDR) == 0);
}

TEST(RealTimeTraps, EveryThreadHasTrapsOfItsOwn) {
    std::atomic<bool> is_in_section = false;
    std::atomic<bool> has_worked = false;
    std::thread other([&] {
        while (!is_in_section) std::this_thread::yield();
        use(std::malloc(10));
        has_worked = !RealTimeSection::isTrapping();
    });
    {
        const RealTimeSection section;
        is_in_section = true;
        while (!has_worked) continue;
    }
    other.join();
    const auto work_on_a_thread = [] {
        std::thread([] {
            const RealTimeSection there;
            use(std::malloc(10));
        }).join();
        _exit(0);
    };
    EXPECT_EXIT(work_on_a_thread(), testing::ExitedWithCode(test::kTrapExitCode), "malloc");
}

TEST(RealTimeTraps, APauseOpensTheTrapsUntilItsEnd) {
    void* memory = nullptr;
    pid_t parent = 0;
    bool is_trapping = true;
    {
        const RealTimeSection section;
        const RealTimePause pause;
        { const RealTimePause inner; }
        is_trapping = RealTimeSection::isTrapping();
        memory = std::malloc(10);
        parent = getppid();
    }
    EXPECT_FALSE(is_trapping);
    EXPECT_NE(memory, nullptr);
    EXPECT_EQ(parent, getppid());
    std::free(memory);
    EXPECT_TRAPPED({ const RealTimePause pause; }; use(std::malloc(10)), "malloc");
    if (test::canTrapSystemCalls()) {
        EXPECT_TRAPPED({ const RealTimePause pause; }; getppid(), "system call");
    }
}

TEST(RealTimeTraps, NothingIsTrappedAfterASection) {
    { const RealTimeSection section; }
    void* const memory = std::malloc(10);
    EXPECT_NE(memory, nullptr);
    std::free(memory);
    EXPECT_EQ(syscall(SYS_getpid), getpid());
    EXPECT_FALSE(RealTimeSection::isTrapping());
}

}  // namespace
