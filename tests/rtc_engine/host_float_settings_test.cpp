// Hosts often make their audio threads treat denormals as zero, which is faster on some processors, and may
// set another rounding mode. The sound must not depend on either.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <span>

#include "au2_limiter_owner.h"
#include "float_settings.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::FloatSettings;
using test::Pcm;
using test::SmallNumbers;

// Produces denormals: full scale, noise of one LSB, and silence that is long enough for every decay to end.
Pcm fromLoudToSilent(int channels, int silent_frames) {
    Pcm all = test::bursts(5, channels * 24000);
    test::append(all, test::noise(6, channels * 12000, 1));
    test::append(all, test::sweep(12000, channels, 32767));
    test::append(all, test::noise(7, channels * 6000, 3000));
    test::append(all, Pcm(static_cast<std::size_t>(channels * silent_frames), 0));
    test::append(all, test::bursts(8, channels * 24000));
    return all;
}

struct HostSettings {
    SmallNumbers small_numbers;
    int rounding;
    const char* name;
};

constexpr HostSettings kSmallNumbersAreZero = {SmallNumbers::kZero, FE_TONEAREST, "denormals are zero"};
constexpr HostSettings kEverySetting[] = {
    kSmallNumbersAreZero,
    {SmallNumbers::kKept, FE_TOWARDZERO, "rounding toward zero"},
    {SmallNumbers::kKept, FE_UPWARD, "rounding upward"},
    {SmallNumbers::kZero, FE_DOWNWARD, "rounding downward, denormals are zero"}};

// Compares the output under each setting, made before the effect is created and made after, with the usual
// output.
template <typename Make, typename Output>
void expectSameBits(std::span<const HostSettings> hosts, const test::SignalFormat& format, Make make,
                    Output output_of) {
    auto as_usual = make();
    const auto expected = output_of(as_usual);
    EXPECT_NE(*std::max_element(expected.begin(), expected.end()), 0);
    for (const HostSettings& host : hosts) {
        SCOPED_TRACE(host.name);
        {
            auto effect = make();
            const FloatSettings settings(host.small_numbers, host.rounding);
            EXPECT_TRUE(test::sameSignal(output_of(effect), expected, format)) << "set after creation";
        }
        const FloatSettings settings(host.small_numbers, host.rounding);
        auto effect = make();
        EXPECT_TRUE(test::sameSignal(output_of(effect), expected, format)) << "set before creation";
    }
}

// Divides under the settings in force. Volatile operands and a volatile result keep the compiler from folding
// the division, and from moving it across a change of the settings.
float minusThird() {
    volatile float one = 1.0F;
    volatile float minus_three = -3.0F;
    volatile float quotient = one / minus_three;
    return quotient;
}

// Guards the tests below, which would also pass if the settings had no effect.
TEST(HostFloatSettings, ApplyForTheLifetimeOfTheGuardObject) {
    volatile float smallest_normal = std::numeric_limits<float>::min();
    const auto half_of_smallest = [&] { return smallest_normal * 0.5F; };
    const float usual = minusThird();
    EXPECT_NE(half_of_smallest(), 0.0F);
    volatile float denormal = std::numeric_limits<float>::denorm_min();
    {
        const FloatSettings settings(SmallNumbers::kZero, FE_UPWARD);
        EXPECT_TRUE(half_of_smallest() == 0.0F);
        EXPECT_TRUE(denormal * 16777216.0F * 16777216.0F == 0.0F);
        EXPECT_NE(minusThird(), usual);
    }
    EXPECT_NE(half_of_smallest(), 0.0F);
    EXPECT_NE(denormal * 16777216.0F * 16777216.0F, 0.0F);
    EXPECT_EQ(minusThird(), usual);
}

TEST(HostFloatSettings, DoNotChangeSurround) {
    for (const int type : {1, 13}) {
        for (const int channels : {1, 2, 6, 8}) {
            for (const int limiter : {0, 1}) {
                SCOPED_TRACE(std::to_string(channels) + " channels, type " + std::to_string(type) +
                             ", limiter " + std::to_string(limiter));
                const auto width = static_cast<int>(test::surroundWidth(channels));
                const Pcm in = fromLoudToSilent(width, 24000);
                expectSameBits(
                    kEverySetting, {}, [&] { return test::SurroundEffect(channels, type, 1, limiter); },
                    [&](test::Effect& surround) { return surround.processInCallsOf(480, in); });
            }
        }
    }
}

TEST(HostFloatSettings, DoNotChangeTheNormalizer) {
    for (const int channels : {1, 2, 6, 8}) {
        SCOPED_TRACE(std::to_string(channels) + " channels");
        const Pcm in = fromLoudToSilent(channels, 20 * 48000);
        expectSameBits(
            kEverySetting, {.channels = channels}, [&] { return test::NormalizerEffect(channels); },
            [&](test::Effect& normalizer) { return normalizer.processInCallsOf(1024, in); });
    }
}

TEST(HostFloatSettings, DoNotChangeDialogueEnhancement) {
    const Pcm in = fromLoudToSilent(2, 20 * 48000);
    for (const int frames : {512, 1024}) {
        SCOPED_TRACE("calls of " + std::to_string(frames));
        expectSameBits(
            kEverySetting, {}, [&] { return test::DialogueEffect({.voice_level = 2.5}); },
            [&](test::Effect& dialogue) { return dialogue.processInCallsOf(frames, in); });
    }
}

TEST(HostFloatSettings, DoNotChangeTheLimiterWhenDenormalsAreZero) {
    for (const std::int32_t lookahead : {0, 1}) {
        SCOPED_TRACE(lookahead);
        std::vector<float> in;
        for (const std::int16_t sample : fromLoudToSilent(2, 20 * 48000)) {
            in.push_back(1.3F * static_cast<float>(sample));
        }
        expectSameBits(
            std::span(&kSmallNumbersAreZero, 1), {.full_scale = 32768},
            [&] {
                auto limiter = sonivex::makeAu2Limiter();
                limiter->lookahead = lookahead;
                return limiter;
            },
            [&](const auto& limiter) {
                std::vector<float> out(in.size());
                for (std::size_t done = 0; done + 480 <= in.size(); done += 480) {
                    au2_limiter_proc(limiter.get(), in.data() + done, 480, out.data() + done);
                }
                return out;
            });
    }
}

TEST(HostFloatSettings, AreRestoredAfterEveryCall) {
    const test::SurroundEffect surround(2, 1, 0, 1);
    const test::NormalizerEffect normalizer(2);
    const test::DialogueEffect dialogue;
    const Pcm in = test::noise(9, 2 * 1024, 20000);
    Pcm out(2 * 1024);
    const float usual = minusThird();
    const FloatSettings settings(SmallNumbers::kZero, FE_UPWARD);
    aem_ProcessSurround(surround.handle(), in.data(), out.data(), 1024);
    EXPECT_NE(minusThird(), usual);
    aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 1024, 2);
    EXPECT_NE(minusThird(), usual);
    aem_ProcessDialoguEnhance(dialogue.handle(), in.data(), out.data(), 1024, 48000);
    EXPECT_NE(minusThird(), usual);
    {
        const test::SurroundEffect other_surround(6, 13, 1, 1);
        const test::NormalizerEffect other_normalizer(2);
        const test::DialogueEffect other_dialogue;
    }
    EXPECT_NE(minusThird(), usual);
}

}  // namespace
