#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

#include "last_line.h"
#include "layouts.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"
#include "sample_ring.h"
#include "support/effects/surround_effect.h"
#include "support/memory/guarded_block.h"
#include "support/signals/signal_matchers.h"
#include "surround_pipelines.h"

namespace {

using test::Pcm;

using PipelineOperation = int (*)(void*, short*, short*, int);

struct Kind {
    int type;
    int channels;
};

// The pipelines with the type and channels for which aem_ProcessSurround calls them.
struct PipelineKind {
    PipelineOperation function;
    int type;
    int width;
};

constexpr Kind kKinds[] = {{1, 1}, {1, 2}, {1, 6}, {1, 8}, {13, 1}, {13, 2}, {13, 6}, {13, 8}};
constexpr PipelineKind kPipelineKinds[] = {{ProcessSurround_Kelvo_Bingo_2, 1, 2},
                                           {ProcessSurround_Kelvo_Bingo_5_1, 1, 6},
                                           {ProcessSurround_Kelvo_Bingo_7_1, 1, 8},
                                           {ProcessSurround_Kelvo_Surround_2_To_Nangua, 13, 2},
                                           {ProcessSurround_Kelvo_Surround_5_1_To_Nangua, 13, 6},
                                           {ProcessSurround_Kelvo_Surround_7_1_To_Nangua, 13, 8}};

// Makes calls that must be rejected or return at once: pipelines that do not match the handle, null buffers,
// more samples than an int can count, and less than one frame.
void callWrongly(void* handle, const Kind& kind, Pcm& in, short* out) {
    const int width = static_cast<int>(test::surroundWidth(kind.channels));
    for (const PipelineKind& pipeline : kPipelineKinds) {
        const bool is_own = pipeline.type == kind.type && pipeline.width == width;
        for (const int frames : {240, 1, 100, 241, 1024, 0, -1, INT_MIN, INT_MAX}) {
            if (!is_own || frames < 1 || frames == INT_MAX) pipeline.function(handle, in.data(), out, frames);
            pipeline.function(handle, nullptr, out, frames);
            pipeline.function(handle, in.data(), nullptr, frames);
            pipeline.function(handle, nullptr, nullptr, frames);
        }
    }
    for (const int frames : {0, -1, -240, INT_MIN, INT_MIN / 2, INT_MAX}) {
        aem_ProcessSurround(handle, in.data(), out, frames);
        aem_ProcessSurround(nullptr, in.data(), out, frames);
    }
    for (const int frames : {240, 1, 480, 0, -1}) {
        aem_ProcessSurround(handle, nullptr, out, frames);
        aem_ProcessSurround(handle, in.data(), nullptr, frames);
        aem_ProcessSurround(handle, nullptr, nullptr, frames);
        aem_ProcessSurround(nullptr, in.data(), out, frames);
    }
}

// Every request for memory during `work` fails and is counted, whether it allocates or maps.
template <typename Work>
void expectNeedsNoMemory(Work work) {
    const std::size_t heap_before = mallinfo2().uordblks;
    int requested = 0;
    int mapping_calls = 0;
    {
        const test::MappingWatch mappings(test::MappingWatch::Kernel::kRefuses);
        const test::AllocationWatch watch(1);
        work();
        requested = watch.requested();
        mapping_calls = mappings.calls();
    }
    EXPECT_EQ(requested, 0);
    EXPECT_EQ(mapping_calls, 0);
    EXPECT_EQ(mallinfo2().uordblks, heap_before);
}

constexpr int kLongestCall_frames = 45000;
static_assert(2 * kLongestCall_frames > sonivex::kRingCapacitySamples,
              "the longest call must exceed the capacity of a ring for every channel count");

// Processes many blocks in calls of several sizes, with the limiter at work. `in` holds the longest call with
// eight channels.
void processForAWhile(void* handle, const Pcm& in, Pcm& out) {
    for (const int frames : {240, 1, 100, 480, 1024, kLongestCall_frames, 240}) {
        aem_ProcessSurround(handle, in.data(), out.data(), frames);
    }
}

TEST(SurroundRealTime, ProcessingAllocatesNothing) {
    for (const int channels : {1, 2, 6, 8}) {
        for (const int type : {1, 13}) {
            for (const int limiter : {0, 1}) {
                const test::SurroundEffect surround(channels, type, 1, limiter);
                const Pcm in = test::bursts(1, 8 * kLongestCall_frames);
                Pcm out(2 * kLongestCall_frames);
                const std::size_t heap_before = mallinfo2().uordblks;
                const test::AllocationWatch watch;
                processForAWhile(surround.handle(), in, out);
                EXPECT_EQ(watch.requested(), 0);
                EXPECT_EQ(mallinfo2().uordblks, heap_before);
            }
        }
    }
}

TEST(SurroundRealTime, RejectedCallsAllocateAndWriteNothing) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(std::to_string(kind.channels) + " channels, type " + std::to_string(kind.type));
        const test::SurroundEffect surround(kind.channels, kind.type);
        Pcm in(8 * 1024, 12000);
        test::GuardedBlock out(2 * 1024);
        const test::LastLine log;
        expectNeedsNoMemory([&] { callWrongly(surround.handle(), kind, in, out.data()); });
        EXPECT_TRUE(out.isUntouched());
        EXPECT_STREQ(test::LastLine::text(), "");
    }
}

// Two handles get the same input; one of them gets invalid calls in between.
TEST(SurroundRealTime, RejectedCallsKeepTheTailOfEarlierSound) {
    for (const Kind& kind : kKinds) {
        for (const int limiter : {0, 1}) {
            SCOPED_TRACE(std::to_string(kind.channels) + " channels, type " + std::to_string(kind.type));
            test::SurroundEffect disturbed(kind.channels, kind.type, 1, limiter);
            test::SurroundEffect alone(kind.channels, kind.type, 1, limiter);
            const std::size_t width = test::surroundWidth(kind.channels);
            Pcm wrong(8 * 1024, 12000);
            Pcm unused(2 * 1024);
            Pcm loudest;
            for (const int frames : {240, 100, 700, 240, 1, 480, 900}) {
                const auto samples = static_cast<std::size_t>(frames) * width;
                // Only the first calls have sound; later output is its tail.
                const Pcm in = loudest.size() < 2 ? test::noise(samples, static_cast<int>(samples), 20000)
                                                  : Pcm(samples, 0);
                const Pcm expected = alone.process(in);
                callWrongly(disturbed.handle(), kind, wrong, unused.data());
                EXPECT_TRUE(test::sameSignal(disturbed.process(in), expected));
                loudest.push_back(*std::max_element(expected.begin(), expected.end()));
            }
            EXPECT_GT(loudest.back(), 0);
        }
    }
}

TEST(SurroundRealTime, PipelinesAllocateNothing) {
    for (const Kind& kind : kKinds) {
        const test::SurroundEffect surround(kind.channels, kind.type);
        Pcm in = test::bursts(3, 8 * 5000);
        Pcm out(2 * 5000);
        for (const PipelineKind& pipeline : kPipelineKinds) {
            expectNeedsNoMemory([&] {
                for (const int frames : {240, 1, 100, 479, 480, 5000, 0, -1}) {
                    pipeline.function(surround.handle(), in.data(), out.data(), frames);
                }
            });
        }
    }
}

TEST(SurroundRealTime, ANullHandleIsLoggedWithoutAllocation) {
    for (const PipelineKind& pipeline : kPipelineKinds) {
        const test::LastLine log;
        Pcm in(8 * 240, 1);
        test::GuardedBlock out(2 * 240);
        expectNeedsNoMemory([&] { pipeline.function(nullptr, in.data(), out.data(), 240); });
        EXPECT_TRUE(out.isUntouched());
        EXPECT_STRNE(test::LastLine::text(), "");
    }
}

using ReverbOperation = int (ConvolveReverb::*)(const float*, float*, int);

// Tries every operation on a reverb that is set up for one layout or none.
TEST(SurroundRealTime, ReverbOperationsAllocateNothing) {
    constexpr ReverbOperation kOperations[] = {
        &ConvolveReverb::process_Kelvo_Bingo_2,      &ConvolveReverb::process_Kelvo_Bingo_5_1,
        &ConvolveReverb::process_Kelvo_Bingo_7_1,    &ConvolveReverb::process_Kelvo_Surround_2,
        &ConvolveReverb::process_Kelvo_Surround_5_1, &ConvolveReverb::process_Kelvo_Surround_7_1,
        &ConvolveReverb::process_kelvo_audio_};
    const std::vector<float> in = test::noiseFloats(1, 8 * 2 * 300);
    for (const sonivex::Layout* const layout :
         {static_cast<const sonivex::Layout*>(nullptr), &sonivex::kBingo2, &sonivex::kBingo51,
          &sonivex::kBingo71, &sonivex::kSurround2, &sonivex::kSurround51, &sonivex::kSurround71,
          &sonivex::kAudio}) {
        ConvolveReverb reverb;
        if (layout != nullptr) reverb.prepare(*layout, layout->width, 240, 1);
        std::vector<float> out(2 * 2 * 300);
        expectNeedsNoMemory([&] {
            for (const int frames : {240, 1, 100, 241, 300, 0, -1, INT_MIN}) {
                for (const ReverbOperation operation : kOperations) {
                    (reverb.*operation)(in.data(), out.data(), frames);
                }
                if (layout != nullptr) reverb.process(*layout, in.data(), out.data(), frames, 2);
            }
        });
    }
}

// Processes in a child that the kernel kills at the first system call other than read, write and exit.
TEST(SurroundRealTime, ProcessingMakesNoSystemCall) {
    for (const int channels : {2, 6, 8}) {
        for (const int type : {1, 13}) {
            const test::SurroundEffect surround(channels, type);
            const Pcm in = test::bursts(2, 8 * kLongestCall_frames);
            Pcm wrong(8 * 1024, 12000);
            Pcm out(2 * kLongestCall_frames);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
                processForAWhile(surround.handle(), in, out);
                callWrongly(surround.handle(), {type, channels}, wrong, out.data());
                syscall(SYS_exit, 0);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
                GTEST_SKIP() << "this system does not support seccomp";
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
                << channels << " channels, type " << type << ": status " << status;
        }
    }
}

}  // namespace
