#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common_effects.h"
#include "real_time/dialogue/failing_libavutil.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"
#include "sonivex/version.h"

namespace {

using test::CommonEffect;

constexpr int kMaxChannels = 8;

// Buffers for calls of any length, made before the memory is watched.
struct Buffers {
    test::Pcm samples = test::bursts(1, kMaxChannels* SONIVEX_MAX_CALL_FRAMES);
    test::Pcm samples_out = test::Pcm(samples.size());
    std::vector<float> floats = test::noiseFloats(2, samples.size(), 1.5F);
    test::Planes planes = test::Planes(kMaxChannels, test::noiseFloats(3, SONIVEX_MAX_CALL_FRAMES, 1.5F));
};

// Calls every function that is real-time safe, with the limiters at work and with wrong arguments.
void useForAWhile(SonivexEffect* effect, Buffers& buffers) {
    const float* in[kMaxChannels];
    float* out[kMaxChannels];
    for (int i = 0; i < kMaxChannels; ++i) {
        out[i] = buffers.planes[static_cast<std::size_t>(i)].data();
        in[i] = out[i];
    }
    for (const int frames : {512, 1, 100, 513, 2048, SONIVEX_MAX_CALL_FRAMES, 0, -1}) {
        sonivex_stream_float(effect, in, out, frames);
    }
    sonivex_reset(effect);
    sonivex_set_voice_level(effect, 3.0);
    for (const int frames : {512, 1, 100, 513, 2048, SONIVEX_MAX_CALL_FRAMES, 0, -1}) {
        sonivex_process_int16(effect, buffers.samples.data(), buffers.samples_out.data(), frames);
        sonivex_process_float(effect, buffers.floats.data(), buffers.floats.data(), frames);
        sonivex_latency_frames(effect, frames);
    }
    sonivex_reset(effect);
    sonivex_stream_float(effect, nullptr, nullptr, 1);
    sonivex_stream_latency_frames(effect);
    sonivex_tail_frames(effect);
    sonivex_block_frames(effect);
    sonivex_input_channels(effect);
    sonivex_output_channels(effect);
    sonivex_status_text(SONIVEX_ERROR_GAPS);
    sonivex_version();
    sonivex_has_effect(SONIVEX_DIALOGUE);
}

TEST(CommonInterfaceRealTime, NothingButCreationAndReleaseNeedsMemory) {
    Buffers buffers;
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
            useForAWhile(effect.get(), buffers);
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
    Buffers buffers;
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto effect = kind.make();
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
            useForAWhile(effect.get(), buffers);
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
