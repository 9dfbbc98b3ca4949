// Compares the whole effect with direct convolution in double, followed by the model of limiter and clip. The
// convolution is slow, so it runs once per layout.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>

#include "models/surround_model.h"
#include "support/effects/surround_effect.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::Pcm;

constexpr std::size_t kBlockFrames = 240;
constexpr double kWantedEqualShare = 0.998;

// One impulse per channel, one after the other, with time for the longest response to end; then noise, a
// sweep, a full-scale square wave, speech, loud noise, and silence.
Pcm programme(int channels) {
    const std::size_t width = test::surroundWidth(channels);
    const int ch = static_cast<int>(width);
    Pcm all(static_cast<std::size_t>(240 * ch) * 8, 0);
    for (std::size_t channel = 0; channel < width; ++channel) {
        all[(channel * 240 + 7) * width + channel] = channel % 2 == 0 ? 32767 : -32768;
    }
    all.resize(all.size() + width * 12000, 0);
    test::append(all, test::noise(1, ch * 480, 6000));
    test::append(all, test::sweep(600, ch, 12000));
    test::append(all, test::square(ch * 480, 31 * ch, 32767));
    Pcm speech = test::interleaved({width, test::recordedSpeech("Front_Center")});
    const std::size_t loud_part = 20000 * width;
    test::append(all, Pcm(speech.begin() + static_cast<std::ptrdiff_t>(loud_part),
                          speech.begin() + static_cast<std::ptrdiff_t>(loud_part + 1200 * width)));
    test::append(all, test::noise(2, ch * 240, 32767));
    test::append(all, Pcm(width * 1200, 0));
    return all;
}

struct Reference {
    Pcm in;
    std::vector<double> ears;
};

const Reference& referenceFor(int type, int channels, int mode) {
    static std::map<std::tuple<int, int, int>, Reference> references;
    const int width = static_cast<int>(test::surroundWidth(channels));
    const int mode_set = type == 1 ? 0 : (mode == 1 || mode == 2 ? mode : 3);
    Reference& reference = references[{type, width, mode_set}];
    if (reference.in.empty()) {
        reference.in = programme(width);
        model::Rendering rendering(type, width, mode);
        reference.ears = rendering.process(model::toUnitScale(reference.in));
    }
    return reference;
}

Pcm converted(const std::vector<double>& ears, bool limits) {
    model::OutputStage output(limits);
    Pcm out;
    for (std::size_t done = 0; done + 2 * kBlockFrames <= ears.size(); done += 2 * kBlockFrames) {
        const auto block = ears.begin() + static_cast<std::ptrdiff_t>(done);
        test::append(out, output.process({block, block + 2 * kBlockFrames}));
    }
    return out;
}

// Expects samples within 1 LSB everywhere, and equal for nearly all samples that are not silent.
void expectSame(const Pcm& out, const Pcm& expected) {
    EXPECT_TRUE(test::closeSignal(out, expected, {.most = 1, .usual_share = kWantedEqualShare}));
    const auto silent = std::count(expected.begin(), expected.end(), 0);
    EXPECT_GT(static_cast<std::ptrdiff_t>(expected.size()) - silent,
              static_cast<std::ptrdiff_t>(expected.size()) / 3);
    testing::Test::RecordProperty("equal_percent", std::to_string(100 * test::shareWithin(0, out, expected)));
}

struct SurroundSetting {
    int type;
    int channels;
    int mode;
};

void PrintTo(const SurroundSetting& setting, std::ostream* out) {
    *out << "type " << setting.type << ", " << setting.channels << " channels, mode " << setting.mode;
}

class SurroundMatchesDirectConvolution : public testing::TestWithParam<SurroundSetting> {};

TEST_P(SurroundMatchesDirectConvolution, InEveryBlockWithLimiterAndClip) {
    const auto [type, channels, mode] = GetParam();
    const Reference& reference = referenceFor(type, channels, mode);
    for (const int limiter : {0, 1}) {
        SCOPED_TRACE("limiter " + std::to_string(limiter));
        test::SurroundEffect surround(channels, type, mode, limiter);
        expectSame(surround.processInCallsOf(240, reference.in), converted(reference.ears, limiter == 1));
    }
}

// The rendered blocks are bit-identical for every call size; a call receives the samples that the queues
// hold.
TEST_P(SurroundMatchesDirectConvolution, ForEveryCallSizeToTheBit) {
    const auto [type, channels, mode] = GetParam();
    const Pcm& in = referenceFor(type, channels, mode).in;
    const std::size_t frames = in.size() / test::surroundWidth(channels);
    test::SurroundEffect whole(channels, type, mode);
    const Pcm blocks = whole.processInCallsOf(240, in);
    std::vector<std::vector<int>> cuts;
    for (const int size : {1, 100, 480, 1024, 4096}) cuts.push_back(test::callsOf(size, frames));
    cuts.push_back(test::randomCalls(11, frames, 1500));
    for (const std::vector<int>& calls : cuts) {
        SCOPED_TRACE("calls of " + std::to_string(calls[0]) + ", " + std::to_string(calls[1]));
        test::SurroundEffect surround(channels, type, mode);
        EXPECT_TRUE(test::sameSignal(surround.process(in, calls), model::servedInCalls(blocks, calls)));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, SurroundMatchesDirectConvolution,
    testing::Values(SurroundSetting{1, 1, 0}, SurroundSetting{1, 2, 0}, SurroundSetting{1, 6, 0},
                    SurroundSetting{1, 8, 0}, SurroundSetting{13, 1, 1}, SurroundSetting{13, 2, 0},
                    SurroundSetting{13, 2, 1}, SurroundSetting{13, 2, 2}, SurroundSetting{13, 2, 3},
                    SurroundSetting{13, 2, 7}, SurroundSetting{13, 6, 0}, SurroundSetting{13, 6, 1},
                    SurroundSetting{13, 6, 2}, SurroundSetting{13, 6, 3}, SurroundSetting{13, 6, 7},
                    SurroundSetting{13, 8, 0}, SurroundSetting{13, 8, 1}, SurroundSetting{13, 8, 2},
                    SurroundSetting{13, 8, 3}, SurroundSetting{13, 8, 7}));

// All channels at once, each with its own announcement.
TEST(SurroundMatchesDirectConvolution, ForSpeechFromEveryLoudspeaker) {
    constexpr std::size_t kFrames = 60 * kBlockFrames;
    for (const SurroundSetting& setting :
         {SurroundSetting{1, 2, 0}, SurroundSetting{1, 8, 0}, SurroundSetting{13, 6, 2}}) {
        SCOPED_TRACE(testing::PrintToString(setting));
        const auto width = static_cast<std::ptrdiff_t>(setting.channels);
        const Pcm all = test::recordedSpeech(setting.channels);
        const auto start = all.begin() + 20000 * width;
        const Pcm in(start, start + static_cast<std::ptrdiff_t>(kFrames) * width);
        model::Rendering rendering(setting.type, setting.channels, setting.mode);
        const std::vector<double> ears = rendering.process(model::toUnitScale(in));
        test::SurroundEffect surround(setting.channels, setting.type, setting.mode);
        expectSame(surround.processInCallsOf(480, in), converted(ears, true));
    }
}

class SurroundRings : public testing::TestWithParam<std::tuple<SurroundSetting, int>> {};

// Some calls exceed the rings. The input ring then rejects samples one by one, which splits frames and
// rotates the channels of all later input; a call for more samples than the output ring holds gets silence.
TEST_P(SurroundRings, RejectTheSamplesThatExceedTheirCapacity) {
    const auto [setting, limiter] = GetParam();
    const int channels = setting.channels;
    model::Surround model(setting.type, channels, setting.mode, limiter == 1);
    test::SurroundEffect surround(channels, setting.type, setting.mode, limiter);
    test::Random random(5);
    for (const int frames : {100, 41000, 30000, 11000, 7, 20000, 41000, 240, 40959}) {
        Pcm in(static_cast<std::size_t>(frames * channels), 0);
        for (int pulse = 0; pulse < frames / 400; ++pulse) {
            in[static_cast<std::size_t>(random.between(0, frames * channels - 1))] =
                static_cast<std::int16_t>(random.between(-9000, 9000));
        }
        ASSERT_TRUE(test::closeSignal(surround.process(in), model.process(in),
                                      {.most = 1, .usual_share = kWantedEqualShare}))
            << "call of " << frames << " frames";
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, SurroundRings,
                         testing::Combine(testing::Values(SurroundSetting{1, 2, 0}, SurroundSetting{1, 6, 0},
                                                          SurroundSetting{1, 8, 0}, SurroundSetting{13, 2, 1},
                                                          SurroundSetting{13, 6, 2},
                                                          SurroundSetting{13, 8, 3}),
                                          testing::Values(0, 1)));

}  // namespace
