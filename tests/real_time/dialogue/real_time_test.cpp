#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "failing_libavutil.h"
#include "real_time/failing_allocator.h"
#include "support/effects/dialogue_effect.h"

namespace {

using test::Pcm;

constexpr int kRates_hz[] = {48000, 96000, 192000};
constexpr int kLongestCall_frames = 45000;

// Processes many blocks in calls of several sizes, with the limiter at work.
void processForAWhile(void* handle, const Pcm& in, Pcm& out) {
    for (const int frames : {512, 1, 100, 513, 2048, kLongestCall_frames, 512}) {
        aem_ProcessDialoguEnhance(handle, in.data(), out.data(), frames, 48000);
    }
}

TEST(DialogueRealTime, ProcessingAllocatesNothing) {
    const Pcm in = test::bursts(1, 2 * kLongestCall_frames);
    Pcm out(in.size());
    for (const int rate_hz : kRates_hz) {
        const test::DialogueEffect dialogue({.rate_hz = rate_hz});
        const std::size_t heap_before = mallinfo2().uordblks;
        const test::AllocationWatch watch;
        const test::LibavutilWatch libavutil;
        processForAWhile(dialogue.handle(), in, out);
        EXPECT_EQ(watch.requested(), 0);
        EXPECT_EQ(libavutil.requested(), 0);
        EXPECT_EQ(mallinfo2().uordblks, heap_before);
    }
}

// Processes in a child that the kernel kills at the first system call other than read, write and exit.
TEST(DialogueRealTime, ProcessingMakesNoSystemCall) {
    const Pcm in = test::bursts(2, 2 * kLongestCall_frames);
    Pcm out(in.size());
    for (const int rate_hz : kRates_hz) {
        const test::DialogueEffect dialogue({.rate_hz = rate_hz});
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
            processForAWhile(dialogue.handle(), in, out);
            syscall(SYS_exit, 0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
            GTEST_SKIP() << "this system does not support seccomp";
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << rate_hz << " Hz: status " << status;
    }
}

}  // namespace
