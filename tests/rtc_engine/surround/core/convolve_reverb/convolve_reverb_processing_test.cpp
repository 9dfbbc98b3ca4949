#include <gtest/gtest.h>

#include <functional>

#include "convolve_reverb_inspector.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using Floats = std::vector<float>;
using Operation = int (ConvolveReverb::*)(const float*, float*, int);
using SetUp = std::function<void(ConvolveReverb&)>;

constexpr int kBlock = 240;
constexpr float kMark = 77.0F;

constexpr Operation kEveryOperation[] = {
    &ConvolveReverb::process_Kelvo_Bingo_2,      &ConvolveReverb::process_Kelvo_Bingo_5_1,
    &ConvolveReverb::process_Kelvo_Bingo_7_1,    &ConvolveReverb::process_Kelvo_Surround_2,
    &ConvolveReverb::process_Kelvo_Surround_5_1, &ConvolveReverb::process_Kelvo_Surround_7_1,
    &ConvolveReverb::process_kelvo_audio_};

Floats rendered(ConvolveReverb& reverb, Operation operation, const Floats& in, std::size_t width) {
    const std::size_t frames = in.size() / width;
    Floats out(2 * frames, kMark);
    EXPECT_EQ((reverb.*operation)(in.data(), out.data(), static_cast<int>(frames)), static_cast<int>(frames));
    return out;
}

// A block with noise in one channel and silence in the others.
Floats onlyChannel(std::size_t channel, std::size_t width) {
    Floats in(width * kBlock, 0.0F);
    const Floats samples = test::noiseFloats(channel + 1, kBlock);
    for (std::size_t i = 0; i < kBlock; ++i) in[i * width + channel] = samples[i];
    return in;
}

// Agent gains that identify the agents in a sum: powers of two, or the agent numbers.
float powerOfTwo(std::size_t agent) {
    return agent < 4 ? static_cast<float>(1 << agent) : 0.0F;
}

float ownNumber(std::size_t agent) {
    return static_cast<float>(agent);
}

void plant(ConvolveReverb& reverb, const sonivex::Layout& layout, float (*gain_of)(std::size_t)) {
    ConvolveReverbInspector(reverb).plantGains(layout, gain_of);
}

// Checks the gains from a channel to both ears. They identify the agents on the path.
void expectGains(ConvolveReverb& reverb, Operation operation, std::size_t width, std::size_t channel,
                 float left, float right) {
    const Floats in = onlyChannel(channel, width);
    const Floats out = rendered(reverb, operation, in, width);
    for (std::size_t i = 0; i < kBlock; ++i) {
        const float sample = in[i * width + channel];
        ASSERT_NEAR(out[2 * i], left * sample, 1e-5F * (1 + left))
            << "channel " << channel << ", frame " << i;
        ASSERT_NEAR(out[2 * i + 1], right * sample, 1e-5F * (1 + right)) << "channel " << channel;
    }
}

TEST(ConvolveReverbProcessing, BingoFeedsBothEarsFromBothChannels) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    plant(reverb, sonivex::kBingo2, powerOfTwo);
    expectGains(reverb, &ConvolveReverb::process_Kelvo_Bingo_2, 2, 0, 1, 2);
    plant(reverb, sonivex::kBingo2, powerOfTwo);
    expectGains(reverb, &ConvolveReverb::process_Kelvo_Bingo_2, 2, 1, 4, 8);
}

TEST(ConvolveReverbProcessing, TwoChannelSurroundKeepsTheSidesApart) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Surround_2(2, kBlock, 1);
    plant(reverb, sonivex::kSurround2, powerOfTwo);
    expectGains(reverb, &ConvolveReverb::process_Kelvo_Surround_2, 2, 0, 1 + 4, 0);
    plant(reverb, sonivex::kSurround2, powerOfTwo);
    expectGains(reverb, &ConvolveReverb::process_Kelvo_Surround_2, 2, 1, 0, 2 + 8);
}

// All agents have the same single tap. Bingo then gives L + R to both ears, and Surround gives each ear twice
// its own channel.
TEST(ConvolveReverbProcessing, BingoAndSurroundDifferForEqualResponses) {
    const Floats in = test::noiseFloats(3, 2 * kBlock);
    const auto half = [](std::size_t) { return 0.5F; };
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    plant(reverb, sonivex::kBingo2, half);
    const Floats bingo = rendered(reverb, &ConvolveReverb::process_Kelvo_Bingo_2, in, 2);
    reverb.prepareToPlay_Kelvo_Surround_2(2, kBlock, 1);
    plant(reverb, sonivex::kSurround2, half);
    const Floats surround = rendered(reverb, &ConvolveReverb::process_Kelvo_Surround_2, in, 2);
    for (std::size_t i = 0; i < in.size(); i += 2) {
        ASSERT_NEAR(bingo[i], 0.5F * (in[i] + in[i + 1]), 1e-6F);
        ASSERT_NEAR(bingo[i + 1], 0.5F * (in[i] + in[i + 1]), 1e-6F);
        ASSERT_NEAR(surround[i], in[i], 1e-6F);
        ASSERT_NEAR(surround[i + 1], in[i + 1], 1e-6F);
    }
}

TEST(ConvolveReverbProcessing, TheAudioStageHasNoCrossTerms) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Audio(2, kBlock);
    plant(reverb, sonivex::kAudio, ownNumber);
    expectGains(reverb, &ConvolveReverb::process_kelvo_audio_, 2, 0, 4, 0);
    plant(reverb, sonivex::kAudio, ownNumber);
    expectGains(reverb, &ConvolveReverb::process_kelvo_audio_, 2, 1, 0, 7);
}

struct Multichannel {
    Operation operation;
    SetUp set_up;
    std::size_t width;
    std::vector<int> first_agents;  // per channel; -1: the channel is not rendered
};

TEST(ConvolveReverbProcessing, EveryChannelPassesThroughItsPairOfAgents) {
    const Multichannel layouts[] = {
        {&ConvolveReverb::process_Kelvo_Bingo_5_1,
         [](ConvolveReverb& reverb) { reverb.prepareToPlay_Kelvo_Bingo_5_1(6, kBlock); },
         6,
         {8, 10, 12, 14, 16, 18}},
        {&ConvolveReverb::process_Kelvo_Bingo_7_1,
         [](ConvolveReverb& reverb) { reverb.prepareToPlay_Kelvo_Bingo_7_1(8, kBlock); },
         8,
         {8, 10, 12, 14, 16, 18, 20, 22}},
        {&ConvolveReverb::process_Kelvo_Surround_5_1,
         [](ConvolveReverb& reverb) { reverb.prepareToPlay_Kelvo_Surround_5_1(6, kBlock, 1); },
         6,
         {8, 10, 12, -1, 14, 16}},
        {&ConvolveReverb::process_Kelvo_Surround_7_1,
         [](ConvolveReverb& reverb) { reverb.prepareToPlay_Kelvo_Surround_7_1(8, kBlock, 1); },
         8,
         {8, 10, 12, -1, 14, 16, 18, 20}}};
    for (const Multichannel& layout : layouts) {
        SCOPED_TRACE(std::to_string(layout.width) + " channels");
        for (std::size_t channel = 0; channel < layout.width; ++channel) {
            ConvolveReverb reverb;
            layout.set_up(reverb);
            plant(reverb, *ConvolveReverbInspector(reverb).layout(), ownNumber);
            const int agent = layout.first_agents[channel];
            const auto left = static_cast<float>(agent < 0 ? 0 : agent);
            const auto right = static_cast<float>(agent < 0 ? 0 : agent + 1);
            expectGains(reverb, layout.operation, layout.width, channel, left, right);
        }
    }
}

TEST(ConvolveReverbProcessing, OnlyBingoRendersTheLowFrequencyChannel) {
    const Floats in = onlyChannel(3, 6);
    ConvolveReverb surround;
    surround.prepareToPlay_Kelvo_Surround_5_1(6, kBlock, 1);
    EXPECT_EQ(rendered(surround, &ConvolveReverb::process_Kelvo_Surround_5_1, in, 6),
              Floats(2 * kBlock, 0.0F));
    ConvolveReverb bingo;
    bingo.prepareToPlay_Kelvo_Bingo_5_1(6, kBlock);
    EXPECT_NE(rendered(bingo, &ConvolveReverb::process_Kelvo_Bingo_5_1, in, 6), Floats(2 * kBlock, 0.0F));
}

TEST(ConvolveReverbProcessing, TheOutputMayBeTheInput) {
    const Floats in = test::noiseFloats(4, 2 * kBlock);
    ConvolveReverb apart;
    apart.prepareToPlay_Kelvo_Audio(2, kBlock);
    ConvolveReverb in_place;
    in_place.prepareToPlay_Kelvo_Audio(2, kBlock);
    Floats samples = in;
    in_place.process_kelvo_audio_(samples.data(), samples.data(), kBlock);
    EXPECT_EQ(samples, rendered(apart, &ConvolveReverb::process_kelvo_audio_, in, 2));
}

TEST(ConvolveReverbProcessing, CallsWithoutFramesReadAndWriteNothing) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    float out = kMark;
    EXPECT_EQ(reverb.process_Kelvo_Bingo_2(nullptr, &out, 0), 0);
    EXPECT_EQ(reverb.process_Kelvo_Bingo_2(nullptr, &out, -240), -240);
    EXPECT_EQ(out, kMark);
}

TEST(ConvolveReverbProcessing, OutputIsSilentWithoutASetUp) {
    ConvolveReverb reverb;
    const Floats in = test::noiseFloats(5, 8 * kBlock);
    for (const Operation operation : kEveryOperation) {
        EXPECT_EQ(rendered(reverb, operation, in, 8), Floats(2 * kBlock, 0.0F));
    }
}

TEST(ConvolveReverbProcessing, ASetUpForOtherChannelsOutputsSilenceWithinBounds) {
    const Floats in = test::noiseFloats(6, 8 * kBlock);
    ConvolveReverb stereo;
    stereo.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    EXPECT_EQ(rendered(stereo, &ConvolveReverb::process_Kelvo_Bingo_5_1, in, 8), Floats(2 * kBlock, 0.0F));
    EXPECT_EQ(rendered(stereo, &ConvolveReverb::process_Kelvo_Surround_7_1, in, 8), Floats(2 * kBlock, 0.0F));
    ConvolveReverb six;
    six.prepareToPlay_Kelvo_Bingo_5_1(6, kBlock);
    EXPECT_EQ(rendered(six, &ConvolveReverb::process_Kelvo_Bingo_7_1, in, 8), Floats(2 * kBlock, 0.0F));
    EXPECT_EQ(rendered(six, &ConvolveReverb::process_Kelvo_Bingo_2, in, 8), Floats(2 * kBlock, 0.0F));
    ConvolveReverb odd;
    odd.prepareToPlay_Kelvo_Bingo_5_1(2, kBlock);
    EXPECT_EQ(rendered(odd, &ConvolveReverb::process_Kelvo_Bingo_5_1, in, 8), Floats(2 * kBlock, 0.0F));
}

struct Named {
    Operation operation;
    const sonivex::Layout* layout;
};

constexpr Named kNamed[] = {{&ConvolveReverb::process_Kelvo_Bingo_2, &sonivex::kBingo2},
                            {&ConvolveReverb::process_Kelvo_Bingo_5_1, &sonivex::kBingo51},
                            {&ConvolveReverb::process_Kelvo_Bingo_7_1, &sonivex::kBingo71},
                            {&ConvolveReverb::process_Kelvo_Surround_2, &sonivex::kSurround2},
                            {&ConvolveReverb::process_Kelvo_Surround_5_1, &sonivex::kSurround51},
                            {&ConvolveReverb::process_Kelvo_Surround_7_1, &sonivex::kSurround71},
                            {&ConvolveReverb::process_kelvo_audio_, &sonivex::kAudio}};

// Between two blocks the test calls every operation that was not set up. These calls must not affect the next
// block.
TEST(ConvolveReverbProcessing, AnOperationWithoutASetUpOutputsSilenceAndDisturbsNoOther) {
    for (const Named& right : kNamed) {
        if (right.layout == &sonivex::kAudio) continue;
        const auto width = static_cast<std::size_t>(right.layout->width);
        const Floats in = test::noiseFloats(9, width * kBlock);
        const Floats later = test::noiseFloats(10, width * kBlock);
        const Floats sides = test::noiseFloats(11, 2 * kBlock);
        ConvolveReverb disturbed;
        ConvolveReverb alone;
        for (ConvolveReverb* const reverb : {&disturbed, &alone}) {
            reverb->prepare(*right.layout, right.layout->width, kBlock, 1);
            reverb->prepareToPlay_Kelvo_Audio(right.layout->width, kBlock);
        }
        for (const Floats* const block : {&in, &later}) {
            EXPECT_EQ(rendered(disturbed, right.operation, *block, width),
                      rendered(alone, right.operation, *block, width));
            EXPECT_EQ(rendered(disturbed, &ConvolveReverb::process_kelvo_audio_, sides, 2),
                      rendered(alone, &ConvolveReverb::process_kelvo_audio_, sides, 2));
            for (const Named& wrong : kNamed) {
                if (wrong.layout == right.layout || wrong.layout == &sonivex::kAudio) continue;
                EXPECT_EQ(rendered(disturbed, wrong.operation, test::noiseFloats(12, 8 * kBlock), 8),
                          Floats(2 * kBlock, 0.0F));
            }
        }
    }
}

TEST(ConvolveReverbProcessing, AnAudioStageWithoutASetUpIsSilentAndDisturbsNoOther) {
    const Floats in = test::noiseFloats(13, 2 * kBlock);
    ConvolveReverb disturbed;
    ConvolveReverb alone;
    for (ConvolveReverb* const reverb : {&disturbed, &alone}) {
        reverb->prepareToPlay_Kelvo_Surround_2(2, kBlock, 1);
    }
    for (int block = 0; block < 3; ++block) {
        EXPECT_EQ(rendered(disturbed, &ConvolveReverb::process_Kelvo_Surround_2, in, 2),
                  rendered(alone, &ConvolveReverb::process_Kelvo_Surround_2, in, 2));
        EXPECT_EQ(rendered(disturbed, &ConvolveReverb::process_kelvo_audio_, in, 2),
                  Floats(2 * kBlock, 0.0F));
    }
}

TEST(ConvolveReverbProcessing, ASetUpForAnotherLayoutOrModeStartsFromSilence) {
    const Floats in = test::noiseFloats(14, 2 * kBlock);
    ConvolveReverb reused;
    reused.prepareToPlay_Kelvo_Surround_2(2, kBlock, 1);
    rendered(reused, &ConvolveReverb::process_Kelvo_Surround_2, in, 2);
    reused.prepareToPlay_Kelvo_Surround_2(2, kBlock, 2);
    ConvolveReverb fresh;
    fresh.prepareToPlay_Kelvo_Surround_2(2, kBlock, 2);
    EXPECT_EQ(rendered(reused, &ConvolveReverb::process_Kelvo_Surround_2, in, 2),
              rendered(fresh, &ConvolveReverb::process_Kelvo_Surround_2, in, 2));
    reused.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    ConvolveReverb bingo;
    bingo.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    EXPECT_EQ(rendered(reused, &ConvolveReverb::process_Kelvo_Bingo_2, in, 2),
              rendered(bingo, &ConvolveReverb::process_Kelvo_Bingo_2, in, 2));
    EXPECT_EQ(rendered(reused, &ConvolveReverb::process_Kelvo_Surround_2, in, 2), Floats(2 * kBlock, 0.0F));
}

TEST(ConvolveReverbProcessing, BlocksLongerThanTheSetUpOutputSilence) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, 100);
    const Floats in = test::noiseFloats(7, 2 * 101);
    EXPECT_EQ(rendered(reverb, &ConvolveReverb::process_Kelvo_Bingo_2, in, 2), Floats(2 * 101, 0.0F));
}

TEST(ConvolveReverbProcessing, RendersShorterBlocks) {
    const Floats in = test::noiseFloats(8, 2 * kBlock);
    ConvolveReverb whole;
    whole.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    const Floats expected = rendered(whole, &ConvolveReverb::process_Kelvo_Bingo_2, in, 2);
    ConvolveReverb parts;
    parts.prepareToPlay_Kelvo_Bingo_2(2, kBlock);
    Floats out(2 * kBlock);
    parts.process_Kelvo_Bingo_2(in.data(), out.data(), 100);
    parts.process_Kelvo_Bingo_2(in.data() + 200, out.data() + 200, 140);
    ASSERT_TRUE(test::closeSignal(out, expected, {.most = 2e-6}));
}

}  // namespace
