#include "sonivex/dialoguenhance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>
#include <vector>

#include "support/effects/dialogue_owner.h"

namespace {

using test::enhanced;
using test::makeDialogue;
using test::Pcm;

constexpr int kHop = 512;
constexpr int kDelayFrames = 3 * kHop;
constexpr test::DialogueSettings kNeutral = {.gain_scale = 0};

// Factors: overlap sum over its divisor, the window's period of N - 1 points, and the idle limiter's gain.
constexpr double kNeutralGain = 4.0 / 3 * 2047 / 2048 * 0.0999 / 0.1001;

Pcm bothChannels(const Pcm& mono) {
    return test::interleaved({mono, mono});
}

Pcm concatenated(const std::vector<Pcm>& parts) {
    Pcm all;
    for (const Pcm& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// Silence with one loud frame.
Pcm click(int frames, int at_frame) {
    Pcm pcm(2 * static_cast<std::size_t>(frames));
    pcm[2 * static_cast<std::size_t>(at_frame)] = 20000;
    pcm[2 * static_cast<std::size_t>(at_frame) + 1] = -20000;
    return pcm;
}

int firstLoudFrame(const Pcm& pcm) {
    const auto loud =
        std::find_if(pcm.begin(), pcm.end(), [](std::int16_t s) { return s > 10000 || s < -10000; });
    return static_cast<int>(loud - pcm.begin()) / 2;
}

bool isSilent(const Pcm& pcm) {
    return std::count(pcm.begin(), pcm.end(), 0) == static_cast<std::ptrdiff_t>(pcm.size());
}

// Least-squares gain over the second half of the output, where the presence has settled.
double settledGain(const Pcm& in, const Pcm& out) {
    const std::size_t delay = 2 * kDelayFrames;
    double product = 0;
    double power = 0;
    for (std::size_t i = out.size() / 2; i < out.size(); ++i) {
        product += static_cast<double>(in[i - delay]) * out[i];
        power += static_cast<double>(in[i - delay]) * in[i - delay];
    }
    return product / power;
}

TEST(DialogueEnhancement, NeutralGainIsFourThirdsTimesTheIdleLimiter) {
    const auto handle = makeDialogue(kNeutral);
    const Pcm in = test::noise(1, 2 * 96 * kHop, 20000);
    const Pcm out = enhanced(handle.get(), in, kHop);
    EXPECT_NEAR(settledGain(in, out), kNeutralGain, 1e-4);
    for (std::size_t i = out.size() / 2; i < out.size(); ++i) {
        ASSERT_NEAR(out[i], in[i - 2 * kDelayFrames] * kNeutralGain, 25) << i;  // the window's ripple, 0.08 %
    }
}

TEST(DialogueEnhancement, LatencyIsThreeHops) {
    const auto handle = makeDialogue(kNeutral);
    EXPECT_EQ(firstLoudFrame(enhanced(handle.get(), click(8 * kHop, 700), kHop)), 700 + kDelayFrames);
}

TEST(DialogueEnhancement, TheFirstThreeHopsAreSilentAndTheFourthIsAtFullLevel) {
    const auto handle = makeDialogue(kNeutral);
    const Pcm out = enhanced(handle.get(), Pcm(2 * 4 * kHop, 9000), kHop);
    for (std::size_t i = 0; i < 2 * kDelayFrames; ++i) ASSERT_NEAR(out[i], 0, 1) << i;
    for (std::size_t i = 2 * kDelayFrames; i < out.size(); ++i)
        ASSERT_NEAR(out[i], 9000 * kNeutralGain, 15) << i;
}

TEST(DialogueEnhancement, CallsThatDivideAHopAddTheRestOfItToTheLatency) {
    for (int frames = 1; frames <= kHop; frames *= 2) {
        const auto handle = makeDialogue(kNeutral);
        const Pcm out = enhanced(handle.get(), click(8 * kHop, 700), frames);
        EXPECT_EQ(firstLoudFrame(out), 700 + kDelayFrames + kHop - frames) << frames;
    }
}

TEST(DialogueEnhancement, CallsOfWholeHopsGiveTheSameOutput) {
    const Pcm in = test::bursts(5, 2 * 32 * kHop);
    const auto handle_512 = makeDialogue();
    const Pcm out_512 = enhanced(handle_512.get(), in, kHop);
    for (const int hops : {2, 4, 32}) {
        const auto handle = makeDialogue();
        EXPECT_EQ(enhanced(handle.get(), in, hops * kHop), out_512) << hops;
    }
}

// A handle past its start-up, with empty queues, that processes a constant signal.
class SteadyDialogue {
  public:
    SteadyDialogue() : handle_(makeDialogue(kNeutral)) { call(8 * kHop); }
    Pcm call(int frames) {
        return enhanced(handle_.get(), Pcm(2 * static_cast<std::size_t>(frames), 9000), frames);
    }

  private:
    test::DialoguePointer handle_;
};

TEST(DialogueEnhancement, IsSilentUntilABlockIsCompleteIfNoOutputIsQueued) {
    SteadyDialogue dialogue;
    EXPECT_TRUE(isSilent(dialogue.call(100)));
    EXPECT_TRUE(isSilent(dialogue.call(411)));   // 511 frames in
    EXPECT_FALSE(isSilent(dialogue.call(1)));    // completes a block; 511 frames of output remain
    EXPECT_FALSE(isSilent(dialogue.call(511)));  // completes no block; served from the remaining frames
}

TEST(DialogueEnhancement, ACallGetsAllItsSamplesOrSilence) {
    SteadyDialogue dialogue;
    EXPECT_TRUE(isSilent(dialogue.call(600)));  // one block is too short for the call and stays queued
    const Pcm out = dialogue.call(500);
    EXPECT_EQ(std::count_if(out.begin(), out.end(), [](std::int16_t s) { return s > 11000; }), 1000);
}

TEST(DialogueEnhancement, ACallLongerThanTheRingGetsSilence) {
    const auto handle = makeDialogue(kNeutral);
    for (int call = 0; call < 3; ++call) {
        EXPECT_TRUE(isSilent(enhanced(handle.get(), Pcm(2 * 40960, 9000), 40960)));
    }
}

TEST(DialogueEnhancement, AFullRingDropsExcessSamples) {
    constexpr std::size_t kRingFrames = 40959;
    constexpr int kWholeBlocks = static_cast<int>(kRingFrames) / kHop;
    const Pcm in = test::noise(7, 2 * 60000, 9000);
    const Pcm fitting(in.begin(), in.begin() + 2 * kRingFrames);
    const auto overfed = makeDialogue();
    const auto full = makeDialogue();
    enhanced(overfed.get(), in, 60000);
    enhanced(full.get(), fitting, kRingFrames);
    const Pcm later(2 * kWholeBlocks * kHop);
    const Pcm out = enhanced(overfed.get(), later, kHop);
    EXPECT_EQ(out, enhanced(full.get(), later, kHop));
    EXPECT_FALSE(isSilent(Pcm(out.end() - 100, out.end())));
}

TEST(DialogueEnhancement, TheHopFollowsTheRateGivenAtCreation) {
    const std::vector<std::tuple<int, int>> hop_of_rate = {{INT_MIN, 512}, {0, 512},       {48000, 512},
                                                           {50000, 512},   {50001, 1024},  {100000, 1024},
                                                           {100001, 2048}, {INT_MAX, 2048}};
    for (const auto& [rate_hz, hop] : hop_of_rate) {
        const auto handle = makeDialogue({.rate_hz = rate_hz, .gain_scale = 0});
        const Pcm out = enhanced(handle.get(), click(8 * hop, 700), hop);
        EXPECT_EQ(firstLoudFrame(out), 700 + 3 * hop) << rate_hz << " Hz";
        const auto by_single_frames = makeDialogue({.rate_hz = rate_hz, .gain_scale = 0});
        EXPECT_EQ(firstLoudFrame(enhanced(by_single_frames.get(), click(8 * hop, 700), 1)), 699 + 4 * hop);
    }
}

TEST(DialogueEnhancement, RaisesWhatBothChannelsShare) {
    const Pcm in = bothChannels(test::noise(1, 128 * kHop, 5000));
    // The channel difference is 0, so p is half the voice level.
    for (const auto& [voice_level, gain] : {std::pair{1.0, 1.5}, {0.5, 1.25}, {2.0, 2.0}, {9.0, 2.0}}) {
        const auto handle = makeDialogue({.voice_level = voice_level});
        const Pcm out = enhanced(handle.get(), in, kHop);
        EXPECT_NEAR(settledGain(in, out) / kNeutralGain, gain, 0.001) << voice_level;
    }
}

TEST(DialogueEnhancement, GainIsFloorPlusScaleAtFullPresence) {
    const Pcm in = bothChannels(test::noise(1, 128 * kHop, 5000));
    for (const auto& [floor, scale] : {std::pair{0.5, 1.0}, {0.0, 2.0}, {1.0, -0.5}, {2.0, 0.5}}) {
        const auto handle = makeDialogue({.gain_floor = floor, .gain_scale = scale, .voice_level = 2});
        const Pcm out = enhanced(handle.get(), in, kHop);
        EXPECT_NEAR(settledGain(in, out) / kNeutralGain, floor + scale, 0.001) << floor << " + " << scale;
    }
}

TEST(DialogueEnhancement, LeavesUncorrelatedChannelsUnchanged) {
    const Pcm in = test::noise(1, 2 * 128 * kHop, 5000);
    const auto handle = makeDialogue();
    const auto neutral = makeDialogue(kNeutral);
    EXPECT_EQ(enhanced(handle.get(), in, kHop), enhanced(neutral.get(), in, kHop));
}

TEST(DialogueEnhancement, ANegativeVoiceLevelRaisesTheOutputWhenTheSidesChange) {
    const auto handle = makeDialogue({.voice_level = -4});
    const Pcm wide = test::noise(1, 2 * 128 * kHop, 5000);
    EXPECT_GT(settledGain(wide, enhanced(handle.get(), wide, kHop)) / kNeutralGain, 1.2);
    const auto other = makeDialogue({.voice_level = -4});
    const Pcm centre = bothChannels(test::noise(1, 128 * kHop, 5000));
    EXPECT_NEAR(settledGain(centre, enhanced(other.get(), centre, kHop)) / kNeutralGain, 1.0, 0.001);
}

TEST(DialogueEnhancement, AVoiceLevelOfZeroIsNeutral) {
    const Pcm in = bothChannels(test::noise(2, 64 * kHop, 9000));
    const auto handle = makeDialogue({.voice_level = 0});
    const auto neutral = makeDialogue(kNeutral);
    EXPECT_EQ(enhanced(handle.get(), in, kHop), enhanced(neutral.get(), in, kHop));
}

TEST(DialogueEnhancement, PresenceCoversATenthOfTheWayPerHopAndDecaysInSilence) {
    const Pcm noise = bothChannels(test::noise(1, 64 * kHop, 5000));
    const Pcm silence(2 * 120 * kHop);
    const auto used = makeDialogue({.voice_level = 2});
    const auto fresh = makeDialogue({.voice_level = 2});
    const Pcm after_use = enhanced(used.get(), concatenated({noise, silence, noise}), kHop);
    const Pcm afresh = enhanced(fresh.get(), concatenated({Pcm(noise.size()), silence, noise}), kHop);
    const std::size_t onset = noise.size() + silence.size() + 2 * kDelayFrames;
    for (std::size_t i = onset; i < afresh.size(); ++i) ASSERT_NEAR(after_use[i], afresh[i], 2) << i;

    // Frame n of the sound has presence 1 - 0.9^n and gain 2 - 0.9^n. Four frames overlap in each hop: in the
    // first one those with presence 0.1, 0.19, 0.271 and 0.3439, so its gain lies between theirs; in hop 40
    // the frames 41 to 44.
    const auto gain_of_hop = [&](std::size_t hop) {
        double in_power = 0;
        double out_power = 0;
        for (std::size_t i = 0; i < 2 * kHop; ++i) {
            in_power += std::pow(noise[hop * 2 * kHop + i] * kNeutralGain, 2);
            out_power += std::pow(afresh[onset + hop * 2 * kHop + i], 2);
        }
        return std::sqrt(out_power / in_power);
    };
    EXPECT_GT(gain_of_hop(0), 1.1);
    EXPECT_LT(gain_of_hop(0), 1.35);
    EXPECT_NEAR(gain_of_hop(40), 2 - std::pow(0.9, 43), 0.01);
}

// Triangle wave whose period is one hop, so that all frames are equal.
Pcm triangle(int frames, int amplitude) {
    Pcm mono;
    for (int i = 0; i < frames; ++i) {
        const int distance = std::abs(i % kHop - kHop / 2);  // 0 .. kHop / 2
        mono.push_back(static_cast<std::int16_t>(amplitude * (distance - kHop / 4) / (kHop / 4)));
    }
    return mono;
}

// Left: centre + side, right: centre - side.
Pcm withSide(const Pcm& centre, const Pcm& side) {
    Pcm pcm;
    for (std::size_t i = 0; i < centre.size(); ++i) {
        pcm.push_back(static_cast<std::int16_t>(centre[i] + side[i]));
        pcm.push_back(static_cast<std::int16_t>(centre[i] - side[i]));
    }
    return pcm;
}

Pcm centreOf(const Pcm& pcm) {
    Pcm centre;
    for (std::size_t i = 0; i < pcm.size(); i += 2) {
        centre.push_back(static_cast<std::int16_t>((pcm[i] + pcm[i + 1]) / 2));
    }
    return centre;
}

TEST(DialogueEnhancement, ASteadyCentreIsNotDialogue) {
    const Pcm in = bothChannels(triangle(128 * kHop, 9000));
    const auto handle = makeDialogue({.voice_level = 2});
    EXPECT_NEAR(settledGain(in, enhanced(handle.get(), in, kHop)) / kNeutralGain, 1.0, 0.001);
}

TEST(DialogueEnhancement, ASteadySideDoesNotHideDialogue) {
    const Pcm changing = test::noise(1, 128 * kHop, 3000);
    const Pcm in = withSide(changing, triangle(128 * kHop, 9000));
    const auto handle = makeDialogue({.voice_level = 2});
    const Pcm out = enhanced(handle.get(), in, kHop);
    EXPECT_GT(settledGain(bothChannels(changing), bothChannels(centreOf(out))) / kNeutralGain, 1.8);
}

// The bin at half the sample rate has no history: its whole magnitude counts as change in every frame.
TEST(DialogueEnhancement, ASteadyToneAtHalfTheSampleRateCountsAsChange) {
    const Pcm in = bothChannels(test::square(128 * kHop, 1, 5000));
    const auto handle = makeDialogue({.voice_level = 2});
    EXPECT_NEAR(settledGain(in, enhanced(handle.get(), in, kHop)) / kNeutralGain, 2.0, 0.01);
}

TEST(DialogueEnhancement, ASteadySideToneAtHalfTheSampleRateHidesDialogue) {
    const Pcm changing = test::noise(1, 128 * kHop, 300);
    const Pcm tone = test::square(128 * kHop, 1, 5000);
    const Pcm in = withSide(changing, tone);
    const auto handle = makeDialogue({.voice_level = 2});
    const auto neutral = makeDialogue(kNeutral);
    EXPECT_EQ(enhanced(handle.get(), in, kHop), enhanced(neutral.get(), in, kHop));
}

TEST(DialogueEnhancement, KeepsSilenceSilent) {
    const auto handle = makeDialogue();
    EXPECT_TRUE(isSilent(enhanced(handle.get(), Pcm(2 * 32 * kHop), kHop)));
}

TEST(DialogueEnhancement, NeverExceedsTheCeiling) {
    for (const double gain_floor : {1.0, 50.0}) {
        const auto handle = makeDialogue({.gain_floor = gain_floor});
        const Pcm out = enhanced(handle.get(), test::bursts(3, 2 * 64 * kHop), 333);
        const auto [lowest, highest] = std::minmax_element(out.begin(), out.end());
        EXPECT_GE(*lowest, -32440);
        EXPECT_LE(*highest, 32440);
        EXPECT_GT(*highest, 31000);
    }
}

TEST(DialogueEnhancement, HandlesAreIndependentAndRepeatable) {
    const Pcm in = test::bursts(4, 2 * 16 * kHop);
    const auto alone = makeDialogue();
    const Pcm expected = enhanced(alone.get(), in, kHop);
    const auto first = makeDialogue();
    const auto second = makeDialogue({.rate_hz = 96000});
    Pcm out;
    for (std::size_t done = 0; done < in.size(); done += 2 * kHop) {
        const auto begin = in.begin() + static_cast<std::ptrdiff_t>(done);
        enhanced(second.get(), test::noise(done, 2 * 700, 20000), 700);
        const Pcm block = enhanced(first.get(), Pcm(begin, begin + 2 * kHop), kHop);
        out.insert(out.end(), block.begin(), block.end());
    }
    EXPECT_EQ(out, expected);
}

}  // namespace
