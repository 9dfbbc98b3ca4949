#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "real_time/failing_allocator.h"
#include "support/effects/mixer_owner.h"
#include "support/effects/normalizer_effect.h"

namespace {

using test::AllocationWatch;
using test::Pcm;

constexpr int kAllocationsOfANormalizer = 3;  // the handle, its mixer, its limiter
constexpr int kAllocationsOfABlock = 2;       // the mixer's sum and its only channel

TEST(NormalizerOutOfMemory, CreationReturnsNullAndFreesEverything) {
    for (int failing = 1; failing <= kAllocationsOfANormalizer; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        testing::internal::CaptureStdout();
        void* handle = nullptr;
        int alive = 0;
        {
            const AllocationWatch watch(failing);
            handle = aem_CreateNormalizer(2, 48000);
            alive = watch.alive();
        }
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(alive, 0);
        const std::string version = failing == 1 ? "" : "mix Version: 88.\n";
        EXPECT_EQ(printed, version + "[audio]::kv normalizer handle is created failed.\n");
    }
}

TEST(NormalizerOutOfMemory, ReleaseFreesEverything) {
    testing::internal::CaptureStdout();
    int requested = 0;
    int alive = -1;
    {
        const AllocationWatch watch;
        void* const handle = aem_CreateNormalizer(2, 48000);
        requested = watch.requested();
        aem_ReleaseNormalizer(handle);
        alive = watch.alive();
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(requested, kAllocationsOfANormalizer);
    EXPECT_EQ(alive, 0);
}

TEST(NormalizerOutOfMemory, ProcessingAllocatesOnlyTheBlocksOfTheMixer) {
    const test::NormalizerEffect normalizer(2);
    const Pcm in = test::noise(1, 2 * 4096, 20000);
    Pcm out(in.size());
    const AllocationWatch watch;
    aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 100, 2);
    EXPECT_EQ(watch.requested(), 0);
    aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 412, 2);
    EXPECT_EQ(watch.requested(), kAllocationsOfABlock);
    aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 4096, 2);
    EXPECT_EQ(watch.requested(), 9 * kAllocationsOfABlock);
    EXPECT_EQ(watch.alive(), 0);
}

TEST(NormalizerOutOfMemory, ABlockWithoutMemoryIsSilentAndTheNextBlockIsNot) {
    for (int failing = 1; failing <= kAllocationsOfABlock; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        const test::NormalizerEffect normalizer(1);
        const Pcm in(1024, 1000);
        Pcm out(1024, -1);
        int result = 0;
        int alive = -1;
        {
            const AllocationWatch watch(failing);
            result = aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 1024, 1);
            alive = watch.alive();
        }
        EXPECT_EQ(result, 1024);
        EXPECT_EQ(alive, 0);
        EXPECT_EQ(std::count(out.begin(), out.begin() + 512, 0), 512);
        EXPECT_GT(*std::min_element(out.begin() + 512, out.end()), 9000);
    }
}

TEST(NormalizerOutOfMemory, TheMixerReportsTheFailedAllocationAndLeavesTheOutput) {
    constexpr int kChannels = 8;
    const Pcm in = test::noise(2, kChannels * 64, 20000);
    const std::int16_t* const input = in.data();
    for (int failing = 1; failing <= 1 + kChannels; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        const auto mixer = test::makeMixer(kChannels);
        Pcm out(in.size(), 9);
        int result = 0;
        int alive = -1;
        {
            const AllocationWatch watch(failing);
            result = mixproc(mixer.get(), &input, nullptr, 0, 1, static_cast<int>(in.size()), out.data());
            alive = watch.alive();
        }
        EXPECT_EQ(result, failing == 1 ? -1 : -2);
        EXPECT_EQ(alive, 0);
        EXPECT_EQ(out, Pcm(in.size(), 9));
        EXPECT_EQ(mixer->limiters[0].writeIndex, 0);
    }
}

TEST(NormalizerOutOfMemory, CreatingAMixerReturnsAnErrorAndStoresNull) {
    MixerState* mixer = reinterpret_cast<MixerState*>(&mixer);
    testing::internal::CaptureStdout();
    int result = 0;
    {
        const AllocationWatch watch(1);
        result = mixcreat(&mixer);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "mix Version: 88.\n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(mixer, nullptr);
}

}  // namespace
