#include "sonivex/dialoguenhance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>
#include <vector>

#include "support/effects/dialogue_effect.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::DialogueEffect;
using test::Pcm;
using test::sameSignal;
using test::widened;

constexpr int kHop = 512;
constexpr int kDelayFrames = 3 * kHop;
constexpr test::DialogueSettings kNeutral = {.gain_scale = 0};

// Factors: overlap sum over its divisor, the window's period of N - 1 points, and the idle limiter's gain.
constexpr double kNeutralGain = 4.0 / 3 * 2047 / 2048 * 0.0999 / 0.1001;

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
    DialogueEffect dialogue(kNeutral);
    const Pcm in = test::noise(1, 2 * 96 * kHop, 20000);
    const Pcm out = dialogue.processInCallsOf(kHop, in);
    EXPECT_NEAR(settledGain(in, out), kNeutralGain, 1e-4);
    for (std::size_t i = out.size() / 2; i < out.size(); ++i) {
        ASSERT_NEAR(out[i], in[i - 2 * kDelayFrames] * kNeutralGain, 25) << i;  // the window's ripple, 0.08 %
    }
}

TEST(DialogueEnhancement, LatencyIsThreeHops) {
    DialogueEffect dialogue(kNeutral);
    EXPECT_EQ(firstLoudFrame(dialogue.processInCallsOf(kHop, click(8 * kHop, 700))), 700 + kDelayFrames);
}

TEST(DialogueEnhancement, TheFirstThreeHopsAreSilentAndTheFourthIsAtFullLevel) {
    DialogueEffect dialogue(kNeutral);
    const Pcm out = dialogue.processInCallsOf(kHop, Pcm(2 * 4 * kHop, 9000));
    for (std::size_t i = 0; i < 2 * kDelayFrames; ++i) ASSERT_NEAR(out[i], 0, 1) << i;
    for (std::size_t i = 2 * kDelayFrames; i < out.size(); ++i)
        ASSERT_NEAR(out[i], 9000 * kNeutralGain, 15) << i;
}

TEST(DialogueEnhancement, CallsThatDivideAHopAddTheRestOfItToTheLatency) {
    for (int frames = 1; frames <= kHop; frames *= 2) {
        DialogueEffect dialogue(kNeutral);
        const Pcm out = dialogue.processInCallsOf(frames, click(8 * kHop, 700));
        EXPECT_EQ(firstLoudFrame(out), 700 + kDelayFrames + kHop - frames) << frames;
    }
}

TEST(DialogueEnhancement, CallsOfWholeHopsGiveTheSameOutput) {
    const Pcm in = test::bursts(5, 2 * 32 * kHop);
    const Pcm out_512 = DialogueEffect().processInCallsOf(kHop, in);
    for (const int hops : {2, 4, 32}) {
        EXPECT_TRUE(sameSignal(DialogueEffect().processInCallsOf(hops * kHop, in), out_512)) << hops;
    }
}

// A handle past its start-up, with empty queues, that processes a constant signal.
class SteadyDialogue {
  public:
    SteadyDialogue() { call(8 * kHop); }
    Pcm call(int frames) { return dialogue_.process(Pcm(2 * static_cast<std::size_t>(frames), 9000)); }

  private:
    DialogueEffect dialogue_{kNeutral};
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
    DialogueEffect dialogue(kNeutral);
    for (int call = 0; call < 3; ++call) {
        EXPECT_TRUE(isSilent(dialogue.process(Pcm(2 * 40960, 9000))));
    }
}

TEST(DialogueEnhancement, AFullRingDropsExcessSamples) {
    constexpr std::size_t kRingFrames = 40959;
    constexpr int kWholeBlocks = static_cast<int>(kRingFrames) / kHop;
    const Pcm in = test::noise(7, 2 * 60000, 9000);
    const Pcm fitting(in.begin(), in.begin() + 2 * kRingFrames);
    DialogueEffect overfed;
    DialogueEffect full;
    overfed.process(in);
    full.process(fitting);
    const Pcm later(2 * kWholeBlocks * kHop);
    const Pcm out = overfed.processInCallsOf(kHop, later);
    EXPECT_TRUE(sameSignal(out, full.processInCallsOf(kHop, later)));
    EXPECT_FALSE(isSilent(Pcm(out.end() - 100, out.end())));
}

TEST(DialogueEnhancement, TheHopFollowsTheRateGivenAtCreation) {
    const std::vector<std::tuple<int, int>> hop_of_rate = {{INT_MIN, 512}, {0, 512},       {48000, 512},
                                                           {50000, 512},   {50001, 1024},  {100000, 1024},
                                                           {100001, 2048}, {INT_MAX, 2048}};
    for (const auto& [rate_hz, hop] : hop_of_rate) {
        DialogueEffect dialogue({.rate_hz = rate_hz, .gain_scale = 0});
        const Pcm out = dialogue.processInCallsOf(hop, click(8 * hop, 700));
        EXPECT_EQ(firstLoudFrame(out), 700 + 3 * hop) << rate_hz << " Hz";
        DialogueEffect by_single_frames({.rate_hz = rate_hz, .gain_scale = 0});
        EXPECT_EQ(firstLoudFrame(by_single_frames.processInCallsOf(1, click(8 * hop, 700))), 699 + 4 * hop);
    }
}

TEST(DialogueEnhancement, RaisesWhatBothChannelsShare) {
    const Pcm in = widened(test::noise(1, 128 * kHop, 5000));
    // The channel difference is 0, so p is half the voice level.
    for (const auto& [voice_level, gain] : {std::pair{1.0, 1.5}, {0.5, 1.25}, {2.0, 2.0}, {9.0, 2.0}}) {
        DialogueEffect dialogue({.voice_level = voice_level});
        const Pcm out = dialogue.processInCallsOf(kHop, in);
        EXPECT_NEAR(settledGain(in, out) / kNeutralGain, gain, 0.001) << voice_level;
    }
}

TEST(DialogueEnhancement, GainIsFloorPlusScaleAtFullPresence) {
    const Pcm in = widened(test::noise(1, 128 * kHop, 5000));
    for (const auto& [floor, scale] : {std::pair{0.5, 1.0}, {0.0, 2.0}, {1.0, -0.5}, {2.0, 0.5}}) {
        DialogueEffect dialogue({.gain_floor = floor, .gain_scale = scale, .voice_level = 2});
        const Pcm out = dialogue.processInCallsOf(kHop, in);
        EXPECT_NEAR(settledGain(in, out) / kNeutralGain, floor + scale, 0.001) << floor << " + " << scale;
    }
}

TEST(DialogueEnhancement, LeavesUncorrelatedChannelsUnchanged) {
    const Pcm in = test::noise(1, 2 * 128 * kHop, 5000);
    DialogueEffect dialogue;
    DialogueEffect neutral(kNeutral);
    EXPECT_TRUE(sameSignal(dialogue.processInCallsOf(kHop, in), neutral.processInCallsOf(kHop, in)));
}

TEST(DialogueEnhancement, ANegativeVoiceLevelRaisesTheOutputWhenTheSidesChange) {
    DialogueEffect dialogue({.voice_level = -4});
    const Pcm wide = test::noise(1, 2 * 128 * kHop, 5000);
    EXPECT_GT(settledGain(wide, dialogue.processInCallsOf(kHop, wide)) / kNeutralGain, 1.2);
    DialogueEffect other({.voice_level = -4});
    const Pcm centre = widened(test::noise(1, 128 * kHop, 5000));
    EXPECT_NEAR(settledGain(centre, other.processInCallsOf(kHop, centre)) / kNeutralGain, 1.0, 0.001);
}

TEST(DialogueEnhancement, AVoiceLevelOfZeroIsNeutral) {
    const Pcm in = widened(test::noise(2, 64 * kHop, 9000));
    DialogueEffect dialogue({.voice_level = 0});
    DialogueEffect neutral(kNeutral);
    EXPECT_TRUE(sameSignal(dialogue.processInCallsOf(kHop, in), neutral.processInCallsOf(kHop, in)));
}

TEST(DialogueEnhancement, PresenceMovesATenthOfTheWayPerHopAndDecaysInSilence) {
    const Pcm noise = widened(test::noise(1, 64 * kHop, 5000));
    const Pcm silence(2 * 120 * kHop);
    DialogueEffect used({.voice_level = 2});
    DialogueEffect fresh({.voice_level = 2});
    const Pcm after_use = used.processInCallsOf(kHop, concatenated({noise, silence, noise}));
    const Pcm afresh = fresh.processInCallsOf(kHop, concatenated({Pcm(noise.size()), silence, noise}));
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
    const Pcm in = widened(triangle(128 * kHop, 9000));
    DialogueEffect dialogue({.voice_level = 2});
    EXPECT_NEAR(settledGain(in, dialogue.processInCallsOf(kHop, in)) / kNeutralGain, 1.0, 0.001);
}

TEST(DialogueEnhancement, ASteadySideDoesNotHideDialogue) {
    const Pcm changing = test::noise(1, 128 * kHop, 3000);
    const Pcm in = withSide(changing, triangle(128 * kHop, 9000));
    DialogueEffect dialogue({.voice_level = 2});
    const Pcm out = dialogue.processInCallsOf(kHop, in);
    EXPECT_GT(settledGain(widened(changing), widened(centreOf(out))) / kNeutralGain, 1.8);
}

// The bin at half the sample rate has no history: its whole magnitude counts as change in every frame.
TEST(DialogueEnhancement, ASteadyToneAtHalfTheSampleRateCountsAsChange) {
    const Pcm in = widened(test::square(128 * kHop, 1, 5000));
    DialogueEffect dialogue({.voice_level = 2});
    EXPECT_NEAR(settledGain(in, dialogue.processInCallsOf(kHop, in)) / kNeutralGain, 2.0, 0.01);
}

TEST(DialogueEnhancement, ASteadySideToneAtHalfTheSampleRateHidesDialogue) {
    const Pcm changing = test::noise(1, 128 * kHop, 300);
    const Pcm tone = test::square(128 * kHop, 1, 5000);
    const Pcm in = withSide(changing, tone);
    DialogueEffect dialogue({.voice_level = 2});
    DialogueEffect neutral(kNeutral);
    EXPECT_TRUE(sameSignal(dialogue.processInCallsOf(kHop, in), neutral.processInCallsOf(kHop, in)));
}

TEST(DialogueEnhancement, KeepsSilenceSilent) {
    EXPECT_TRUE(isSilent(DialogueEffect().processInCallsOf(kHop, Pcm(2 * 32 * kHop))));
}

TEST(DialogueEnhancement, NeverExceedsTheCeiling) {
    for (const double gain_floor : {1.0, 50.0}) {
        DialogueEffect dialogue({.gain_floor = gain_floor});
        const Pcm out = dialogue.processInCallsOf(333, test::bursts(3, 2 * 64 * kHop));
        const auto [lowest, highest] = std::minmax_element(out.begin(), out.end());
        EXPECT_GE(*lowest, -32440);
        EXPECT_LE(*highest, 32440);
        EXPECT_GT(*highest, 31000);
    }
}

TEST(DialogueEnhancement, HandlesAreIndependentAndRepeatable) {
    const Pcm in = test::bursts(4, 2 * 16 * kHop);
    const Pcm expected = DialogueEffect().processInCallsOf(kHop, in);
    DialogueEffect first;
    DialogueEffect second({.rate_hz = 96000});
    Pcm out;
    for (std::size_t done = 0; done < in.size(); done += 2 * kHop) {
        const auto begin = in.begin() + static_cast<std::ptrdiff_t>(done);
        second.process(test::noise(done, 2 * 700, 20000));
        test::append(out, first.process(Pcm(begin, begin + 2 * kHop)));
    }
    EXPECT_TRUE(sameSignal(out, expected));
}

}  // namespace
