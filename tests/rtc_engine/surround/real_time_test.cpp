#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../failing_allocator.h"
#include "surround_owner.h"

namespace {

using test::Pcm;

/* Many blocks by calls of several sizes, with the limiter at work. */
void processForAWhile(void* handle, const Pcm& in, Pcm& out, int channels) {
    const int width = static_cast<int>(test::surroundWidth(channels));
    for (const int frames : {240, 1, 100, 480, 1024, 45000, 240}) {
        if (static_cast<std::size_t>(frames * width) > in.size()) continue;
        aem_ProcessSurround(handle, in.data(), out.data(), frames);
    }
}

TEST(SurroundRealTime, ProcessingAllocatesNothing) {
    for (const int channels : {1, 2, 6, 8}) {
        for (const int type : {1, 13}) {
            for (const int limiter : {0, 1}) {
                const auto handle = test::makeSurround(channels, type, 1, limiter);
                const Pcm in = test::bursts(1, 8 * 2000);
                Pcm out(2 * 45000);
                const std::size_t heap_before = mallinfo2().uordblks;
                const test::AllocationWatch watch;
                processForAWhile(handle.get(), in, out, channels);
                EXPECT_EQ(watch.requested(), 0);
                EXPECT_EQ(mallinfo2().uordblks, heap_before);
            }
        }
    }
}

/* In a process that the kernel ends at the first system call other than read, write and exit. */
TEST(SurroundRealTime, ProcessingMakesNoSystemCall) {
    for (const int channels : {2, 6, 8}) {
        for (const int type : {1, 13}) {
            const auto handle = test::makeSurround(channels, type);
            const Pcm in = test::bursts(2, 8 * 2000);
            Pcm out(2 * 45000);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
                processForAWhile(handle.get(), in, out, channels);
                syscall(SYS_exit, 0);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            if (WIFEXITED(status) && WEXITSTATUS(status) == 77) GTEST_SKIP() << "no seccomp here";
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
                << channels << " channels, type " << type << ": status " << status;
        }
    }
}

}  // namespace
