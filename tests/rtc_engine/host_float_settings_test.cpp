/* Hosts often let their audio threads take numbers that are too small to be normal for zero, which is quicker
 * on some processors. The sound must not depend on it. */
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "au2_effect/normalizer_owner.h"
#include "au2_limiter_owner.h"
#include "float_settings.h"
#include "surround/surround_owner.h"

namespace {

using test::FloatSettings;
using test::Pcm;
using test::SmallNumbers;

/* What small numbers come from: full scale, one step above silence, and silence for long enough that
 * everything that decays has decayed. */
Pcm fromLoudToSilent(int channels, int silent_frames) {
    Pcm all = test::bursts(5, channels * 24000);
    test::append(all, test::noise(6, channels * 12000, 1));
    test::append(all, test::sweep(12000, channels, 32767));
    test::append(all, test::noise(7, channels * 6000, 3000));
    test::append(all, Pcm(static_cast<std::size_t>(channels * silent_frames), 0));
    test::append(all, test::bursts(8, channels * 24000));
    return all;
}

/* The setting is there while an effect works, and while it is made, too, or is not. */
template <typename Make, typename Output>
void expectSameBits(Make make, Output outputOf) {
    auto as_usual = make();
    const auto expected = outputOf(as_usual.get());
    EXPECT_NE(*std::max_element(expected.begin(), expected.end()), 0);
    {
        auto effect = make();
        const FloatSettings settings(SmallNumbers::kZero, FE_TONEAREST);
        ASSERT_EQ(outputOf(effect.get()), expected) << "set after creation";
    }
    const FloatSettings settings(SmallNumbers::kZero, FE_TONEAREST);
    auto effect = make();
    ASSERT_EQ(outputOf(effect.get()), expected) << "set before creation";
}

/* The tests below would pass if the setting did nothing at all. */
TEST(HostFloatSettings, AreInForceAsLongAsATestAsksForThem) {
    volatile float smallest_normal = std::numeric_limits<float>::min();
    volatile float one = 1.0F;
    const auto halfOfSmallest = [&] { return smallest_normal * 0.5F; };
    const float third = one / 3.0F;
    EXPECT_NE(halfOfSmallest(), 0.0F);
    volatile float denormal = std::numeric_limits<float>::denorm_min();
    {
        const FloatSettings settings(SmallNumbers::kZero, FE_UPWARD);
        EXPECT_TRUE(halfOfSmallest() == 0.0F);
        EXPECT_TRUE(denormal * 16777216.0F * 16777216.0F == 0.0F);
        EXPECT_NE(one / -3.0F, -third);
    }
    EXPECT_NE(halfOfSmallest(), 0.0F);
    EXPECT_NE(denormal * 16777216.0F * 16777216.0F, 0.0F);
    EXPECT_EQ(one / -3.0F, -third);
}

TEST(HostFloatSettings, SurroundSoundsTheSameWhereSmallNumbersAreZero) {
    for (const int type : {1, 13}) {
        for (const int channels : {1, 2, 6, 8}) {
            for (const int limiter : {0, 1}) {
                SCOPED_TRACE(std::to_string(channels) + " channels, type " + std::to_string(type) +
                             ", limiter " + std::to_string(limiter));
                const auto width = static_cast<int>(test::surroundWidth(channels));
                const Pcm in = fromLoudToSilent(width, 24000);
                expectSameBits([&] { return test::makeSurround(channels, type, 1, limiter); },
                               [&](void* handle) {
                                   const std::size_t frames = in.size() / static_cast<std::size_t>(width);
                                   return test::surrounded(handle, in, channels, test::callsOf(480, frames));
                               });
            }
        }
    }
}

TEST(HostFloatSettings, TheNormalizerSoundsTheSameWhereSmallNumbersAreZero) {
    for (const int channels : {1, 2, 6, 8}) {
        SCOPED_TRACE(std::to_string(channels) + " channels");
        const Pcm in = fromLoudToSilent(channels, 20 * 48000);
        expectSameBits([&] { return test::makeNormalizer(channels); },
                       [&](void* handle) { return test::normalized(handle, in, channels, 1024); });
    }
}

TEST(HostFloatSettings, TheLimiterGivesTheSameBitsWhereSmallNumbersAreZero) {
    for (const std::int32_t lookahead : {0, 1}) {
        SCOPED_TRACE(lookahead);
        std::vector<float> in;
        for (const std::int16_t sample : fromLoudToSilent(2, 20 * 48000)) {
            in.push_back(1.3F * static_cast<float>(sample));
        }
        expectSameBits(
            [&] {
                auto limiter = sonivex::makeAu2Limiter();
                limiter->lookahead = lookahead;
                return limiter;
            },
            [&](Au2LimiterState* limiter) {
                std::vector<float> out(in.size());
                for (std::size_t done = 0; done + 480 <= in.size(); done += 480) {
                    au2_limiter_proc(limiter, in.data() + done, 480, out.data() + done);
                }
                return out;
            });
    }
}

}  // namespace
