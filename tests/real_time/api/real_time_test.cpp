#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common_effects.h"
#include "real_time/api/every_call.h"
#include "real_time/dialogue/failing_libavutil.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"

namespace {

using test::CommonEffect;

TEST(CommonInterfaceRealTime, NothingButCreationAndReleaseNeedsMemory) {
    test::CallBuffers buffers;
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto effect = kind.make();
        const std::size_t heap_before = mallinfo2().uordblks;
        int requested = 0;
        int requested_of_libavutil = 0;
        int mapping_calls = 0;
        {
            const test::MappingWatch mappings(test::MappingWatch::Kernel::kRefuses);
            const test::LibavutilWatch libavutil(1);
            const test::AllocationWatch watch(1);
            test::makeEveryCall(effect.get(), buffers);
            requested = watch.requested();
            requested_of_libavutil = libavutil.requested();
            mapping_calls = mappings.calls();
        }
        EXPECT_EQ(requested, 0);
        EXPECT_EQ(requested_of_libavutil, 0);
        EXPECT_EQ(mapping_calls, 0);
        EXPECT_EQ(mallinfo2().uordblks, heap_before);
    }
}

// Works in a child that the kernel kills at the first system call other than read, write and exit.
TEST(CommonInterfaceRealTime, NothingButCreationAndReleaseCallsTheSystem) {
    test::CallBuffers buffers;
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto effect = kind.make();
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
            test::makeEveryCall(effect.get(), buffers);
            syscall(SYS_exit, 0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
            GTEST_SKIP() << "this system does not support seccomp";
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    }
}

}  // namespace
