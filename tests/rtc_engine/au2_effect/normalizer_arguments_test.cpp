// The normalizer's response to invalid arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>

#include "support/effects/normalizer_effect.h"
#include "support/logs/effect_log_capture.h"
#include "support/memory/guarded_block.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::GuardedBlock;
using test::NormalizerEffect;
using test::Pcm;

TEST(NormalizerArguments, ANullHandleIsLoggedAndRejected) {
    const test::EffectLogCapture log;
    const Pcm in(8, 1);
    GuardedBlock out(8);
    EXPECT_EQ(aem_ProcessNormalizer(nullptr, in.data(), out.data(), 4, 2), -1);
    EXPECT_TRUE(out.isUntouched());
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "[ZubrelAem]: (normalizer: 188) [audio]::kv normalizer handle is NULL.\n");
}

TEST(NormalizerArguments, ReleasingANullHandleIsLogged) {
    const test::EffectLogCapture log;
    aem_ReleaseNormalizer(nullptr);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "[ZubrelAem]: (normalizer: 239) [audio]::kv normalizer handle is NULL.\n");
}

TEST(NormalizerArguments, NullBuffersAreRejected) {
    const NormalizerEffect normalizer(2);
    const Pcm in(8, 1);
    GuardedBlock out(8);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), nullptr, out.data(), 4, 2), -1);
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), in.data(), nullptr, 4, 2), -1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), nullptr, nullptr, 0, 2), -1);
}

TEST(NormalizerArguments, CallsWithoutFramesDoNothing) {
    const NormalizerEffect normalizer(2);
    const short in = 1;
    GuardedBlock out(1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 0, 2), 0);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), -5, 2), -10);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), -1073741824, 2), INT_MIN);
    EXPECT_TRUE(out.isUntouched());
}

TEST(NormalizerArguments, ChannelCountsOutOfRangeDoNothing) {
    const NormalizerEffect normalizer(2);
    const short in = 1;
    GuardedBlock out(1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 512, 0), 0);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 512, -1), -512);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), -3, -4), 12);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 1000, 21), 21000);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 1, INT_MAX), INT_MAX);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 1, INT_MIN), INT_MIN);
    EXPECT_TRUE(out.isUntouched());
}

TEST(NormalizerArguments, SampleCountsBeyondAnIntAreRejected) {
    const NormalizerEffect normalizer(2);
    const short in = 1;
    GuardedBlock out(1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), 1073741824, 2), -1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), INT_MAX, INT_MAX), -1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), INT_MIN, 2), -1);
    EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), &in, out.data(), INT_MIN, -1), -1);
    EXPECT_TRUE(out.isUntouched());
}

TEST(NormalizerArguments, RejectedCallsLeaveTheQueuesUnchanged) {
    const Pcm in = test::bursts(6, 2 * 20000);
    const Pcm expected = NormalizerEffect(2).processInCallsOf(400, in);

    NormalizerEffect normalizer(2);
    Pcm out;
    for (std::size_t done = 0; done < in.size(); done += 800) {
        GuardedBlock unused(1);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), unused.data(), 0, 2);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), unused.data(), -100, 2);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), unused.data(), 100, 0);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), unused.data(), 100, 21);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), unused.data(), INT_MAX, 2);
        EXPECT_TRUE(unused.isUntouched());
        const auto first = in.begin() + static_cast<std::ptrdiff_t>(done);
        test::append(out, normalizer.process(Pcm(first, first + 800)));
    }
    EXPECT_TRUE(test::sameSignal(out, expected));
}

TEST(NormalizerArguments, NothingOutsideTheOutputIsWritten) {
    for (const int channels : {1, 2, 3, 8, 19, 20}) {
        const NormalizerEffect normalizer(channels);
        for (const int frames : {1, 511, 512, 513, 4100, 100000}) {
            const auto samples = static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames);
            // The input has exactly the memory it needs, so that a sanitizer reports every read beyond it.
            const auto in = std::make_unique<short[]>(samples);
            std::fill_n(in.get(), samples, short{-3000});
            GuardedBlock out(samples);
            EXPECT_EQ(aem_ProcessNormalizer(normalizer.handle(), in.get(), out.data(), frames, channels),
                      static_cast<int>(samples));
            EXPECT_TRUE(out.guardsAreWhole()) << channels << " channels, " << frames << " frames";
            EXPECT_EQ(std::count(in.get(), in.get() + samples, -3000), static_cast<std::ptrdiff_t>(samples));
        }
    }
}

TEST(NormalizerArguments, TheChannelCountMayChangeFromCallToCall) {
    const NormalizerEffect normalizer(2);
    test::Random random(8);
    for (int call = 0; call < 500; ++call) {
        const int channels = random.between(1, 20);
        const int frames = random.between(1, 3000);
        const auto samples = static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames);
        const Pcm in = test::noise(random.bits(), static_cast<int>(samples), 3000);
        GuardedBlock out(samples);
        ASSERT_EQ(aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), frames, channels),
                  static_cast<int>(samples));
        ASSERT_TRUE(out.guardsAreWhole());
    }
}

TEST(NormalizerArguments, CreationAcceptsAnyChannelCountAndRate) {
    for (const int number : {INT_MIN, -1, 0, 1, 20, 21, INT_MAX}) {
        testing::internal::CaptureStdout();
        void* const handle = aem_CreateNormalizer(number, number);
        testing::internal::GetCapturedStdout();
        ASSERT_NE(handle, nullptr);
        Pcm out(512);
        EXPECT_EQ(aem_ProcessNormalizer(handle, Pcm(512, 900).data(), out.data(), 512, 1), 512);
        EXPECT_GT(out.front(), 8000);
        aem_ReleaseNormalizer(handle);
    }
}

}  // namespace
