#include "mixer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "models/normalizer_model.h"
#include "support/effects/mixer_owner.h"
#include "support/signals/signals.h"

namespace {

using test::makeMixer;
using test::MixerPointer;
using test::Pcm;

// An idle limiter lowers the level by up to 0.2 %, truncation by up to one LSB.
void expectNearlyEqual(std::int16_t output, double sum) {
    EXPECT_LE(std::abs(output), std::abs(sum) + 0.01);
    EXPECT_GE(std::abs(output), std::abs(sum) * 0.998 - 1);
}

bool isAllZero(const MixerState& mixer) {
    static const MixerState zero{};
    return std::memcmp(&mixer, &zero, sizeof mixer) == 0;
}

TEST(Mixer, CreationPrintsTheVersionAndReturnsAZeroedRecord) {
    std::string printed;
    const MixerPointer mixer = test::createMixer(&printed);
    EXPECT_EQ(printed, "mix Version: 88.\n");
    EXPECT_TRUE(isAllZero(*mixer));
    EXPECT_STREQ(VerString, "88");
}

TEST(Mixer, InitSetsUpEveryLimiter) {
    const MixerPointer mixer = makeMixer(3, 1, 0.5F);
    EXPECT_EQ(mixer->channelCount, 3);
    for (const PeakLimiterState& limiter : mixer->limiters) {
        EXPECT_EQ(limiter.threshold, static_cast<float>(0.5 * 32440.32));
        EXPECT_EQ(limiter.perSampleDetect, 1);
        EXPECT_EQ(limiter.gain, 1.0F);
        EXPECT_EQ(limiter.leafCount, 64);
    }
    EXPECT_EQ(mixer->gainDb, 0.0F);
    EXPECT_EQ(mixer->gainInitialised, 0);
}

TEST(Mixer, InitForgetsThePreviousGain) {
    const MixerPointer mixer = makeMixer();
    mixer->gainDb = 5.0F;
    mixer->gainInitialised = 1;
    mixinit(mixer.get(), 1, 0, 1.0F);
    EXPECT_EQ(mixer->gainDb, 0.0F);
    EXPECT_EQ(mixer->gainInitialised, 0);
}

TEST(Mixer, RejectsChannelCountsOtherThanOneToEight) {
    const std::int16_t in[] = {1, 2, 3, 4};
    const std::int16_t* const inputs[] = {in};
    for (const int channels : {0, -1, 9, 1000000, -2147483647}) {
        SCOPED_TRACE(channels);
        const MixerPointer mixer = makeMixer(channels);
        EXPECT_TRUE(isAllZero(*mixer));
        std::int16_t out[] = {9, 9, 9, 9};
        EXPECT_EQ(mixproc(mixer.get(), inputs, nullptr, 0, 1, 4, out), -2);
        EXPECT_EQ(out[0], 9);
        EXPECT_EQ(out[3], 9);
    }
    const MixerPointer never_set_up = test::createMixer();
    std::int16_t out[] = {9, 9, 9, 9};
    EXPECT_EQ(mixproc(never_set_up.get(), inputs, nullptr, 0, 1, 4, out), -2);
}

TEST(Mixer, AnInvalidInitClearsAWorkingMixer) {
    const MixerPointer mixer = makeMixer(2);
    mixinit(mixer.get(), 9, 0, 1.0F);
    EXPECT_TRUE(isAllZero(*mixer));
}

TEST(Mixer, SumsItsInputs) {
    const Pcm a{100, 200, -300, 0};
    const Pcm b{1000, -2000, 3000, 0};
    const std::int16_t* const inputs[] = {a.data(), b.data()};
    Pcm out(4);
    EXPECT_EQ(mixproc(makeMixer().get(), inputs, nullptr, 1, 2, 4, out.data()), 0);
    for (std::size_t i = 0; i < 4; ++i) expectNearlyEqual(out[i], a[i] + b[i]);
}

TEST(Mixer, ScalesByFactors) {
    const Pcm a{100, 200, -300, 400};
    const Pcm b{1000, -2000, 3000, 400};
    const std::int16_t* const inputs[] = {a.data(), b.data()};
    const float gains[] = {-2.0F, 0.25F};
    Pcm out(4);
    EXPECT_EQ(mixproc(makeMixer().get(), inputs, gains, 0, 2, 4, out.data()), 0);
    for (std::size_t i = 0; i < 4; ++i) expectNearlyEqual(out[i], -2.0 * a[i] + 0.25 * b[i]);
}

TEST(Mixer, ScalesByDecibels) {
    const Pcm a{100, 200, -300, 400};
    const Pcm b{1000, -2000, 3000, 400};
    const std::int16_t* const inputs[] = {a.data(), b.data()};
    const float gains[] = {20.0F, -20.0F};
    Pcm out(4);
    EXPECT_EQ(mixproc(makeMixer().get(), inputs, gains, 1, 2, 4, out.data()), 0);
    for (std::size_t i = 0; i < 4; ++i) expectNearlyEqual(out[i], 10.0 * a[i] + 0.1 * b[i]);
}

TEST(Mixer, OutputsSilenceWithoutInputs) {
    Pcm out(4, 9);
    EXPECT_EQ(mixproc(makeMixer().get(), nullptr, nullptr, 0, 0, 4, out.data()), 0);
    EXPECT_EQ(out, Pcm(4, 0));
}

TEST(Mixer, ALoudChannelDoesNotLowerTheOthers) {
    const Pcm loud(4000, 30000);
    const Pcm quiet(4000, 1000);
    const Pcm in = test::interleaved({loud, quiet});
    const std::int16_t* const inputs[] = {in.data(), in.data()};
    Pcm out(in.size());
    EXPECT_EQ(mixproc(makeMixer(2).get(), inputs, nullptr, 0, 2, 8000, out.data()), 1);
    EXPECT_LE(out[7998], 32440);
    EXPECT_NEAR(out[7999], 2000 * 0.998, 1);
}

TEST(Mixer, LimitsEachChannelIndependently) {
    std::vector<Pcm> channels;
    std::vector<model::Limiter> limiters(8);
    for (std::uint64_t c = 0; c < 8; ++c) channels.push_back(test::bursts(40 + c, 900 * 20));
    const MixerPointer mixer = makeMixer(8);
    const Pcm in = test::interleaved(channels);
    const float gain = 2.0F;
    for (std::size_t block = 0; block < 20; ++block) {
        const std::int16_t* const input = in.data() + block * 900 * 8;
        Pcm out(900 * 8);
        mixproc(mixer.get(), &input, &gain, 0, 1, 900 * 8, out.data());
        for (std::size_t c = 0; c < 8; ++c) {
            std::vector<float> doubled;
            for (std::size_t f = 0; f < 900; ++f) {
                doubled.push_back(2.0F * static_cast<float>(channels[c][block * 900 + f]));
            }
            const std::vector<float> limited = limiters[c].process(doubled);
            for (std::size_t f = 0; f < 900; ++f) {
                ASSERT_EQ(out[f * 8 + c], static_cast<int>(limited[f]))
                    << "block " << block << " channel " << c;
            }
        }
    }
}

TEST(Mixer, NeverExceedsTheCeiling) {
    for (const std::uint64_t seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        const MixerPointer mixer = makeMixer(2);
        for (int block = 0; block < 50; ++block) {
            const Pcm in = test::bursts(random.bits(), 2 * random.between(1, 1000));
            const std::int16_t* const input = in.data();
            const float gain_db = static_cast<float>(random.between(-10, 60));
            Pcm out(in.size());
            mixproc(mixer.get(), &input, &gain_db, 1, 1, static_cast<int>(in.size()), out.data());
            for (const std::int16_t y : out)
                ASSERT_LE(std::abs(static_cast<int>(y)), 32440) << "block " << block;
        }
    }
}

TEST(Mixer, MixesButDoesNotLimitSamplesOfAnIncompleteFrame) {
    const Pcm in{100, 200, 300, 400, 32767};
    const std::int16_t* const inputs[] = {in.data(), in.data()};
    Pcm out(6, 9);
    EXPECT_EQ(mixproc(makeMixer(2).get(), inputs, nullptr, 0, 2, 5, out.data()), 0);
    expectNearlyEqual(out[3], 800);
    EXPECT_EQ(out[4], 32767);
    EXPECT_EQ(out[5], 9);
    // Three samples are less than one frame of eight channels.
    EXPECT_EQ(mixproc(makeMixer(8).get(), inputs, nullptr, 0, 2, 3, out.data()), 0);
    EXPECT_EQ((Pcm{out.begin(), out.begin() + 3}), (Pcm{200, 400, 600}));
}

TEST(Mixer, IgnoresCallsWithoutSamples) {
    const MixerPointer mixer = makeMixer();
    const std::int16_t in = 5;
    const std::int16_t* const inputs[] = {&in};
    std::int16_t out = 9;
    EXPECT_EQ(mixproc(mixer.get(), inputs, nullptr, 0, 1, 0, &out), 0);
    EXPECT_EQ(mixproc(mixer.get(), inputs, nullptr, 0, 1, -3, &out), 0);
    EXPECT_EQ(out, 9);
    EXPECT_EQ(mixer->limiters[0].writeIndex, 0);
}

TEST(Mixer, FreeingNullIsAnError) {
    EXPECT_EQ(mixfree(nullptr), -1);
    EXPECT_EQ(mixfree(test::createMixer().release()), 0);
}

}  // namespace
