// Compares the whole effect with its model in double. Single-precision sums and the rounding of the
// transforms, which differs between processors, may affect the last bit.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>

#include "models/dialogue_model.h"
#include "support/effects/dialogue_effect.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::DialogueSettings;
using test::Pcm;

constexpr double kWantedShareWithinOne = 0.999;
constexpr int kMaxDifference = 2;

struct Signal {
    const char* name;
    Pcm (*make)();
};

void PrintTo(const Signal& signal, std::ostream* out) {
    *out << signal.name;
}

constexpr int kFrames = 30000;

// Part of a recorded announcement, with words and pauses.
Pcm speech() {
    Pcm words = test::recordedSpeech("Front_Center");
    words.resize(kFrames);
    return words;
}

Pcm silence() {
    return Pcm(2 * kFrames, 0);
}

Pcm monoCompatible() {
    return test::widened(speech());
}

Pcm antiPhase() {
    const Pcm left = test::noise(21, kFrames, 9000);
    return test::interleaved({left, test::scaled(left, -1, 1)});
}

Pcm hardPanned() {
    return test::interleaved({speech(), Pcm(kFrames, 0)});
}

// A square wave, equal in both channels, and independent noise; both reach both ends of the range.
Pcm fullScale() {
    Pcm both = test::square(kFrames, 2 * 37, 32767);
    const Pcm apart = test::noise(22, kFrames, 32767);
    both.insert(both.end(), apart.begin(), apart.end());
    return both;
}

Pcm speechWithBackground() {
    const Pcm words = speech();
    Pcm mix = test::noise(23, 2 * kFrames, 1500);
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] = static_cast<std::int16_t>(mix[i] + words[i / 2] / 2);
    return mix;
}

constexpr Signal kSilence{"Silence", silence};
constexpr Signal kMonoCompatible{"MonoCompatible", monoCompatible};
constexpr Signal kAntiPhase{"AntiPhase", antiPhase};
constexpr Signal kHardPanned{"HardPanned", hardPanned};
constexpr Signal kFullScale{"FullScale", fullScale};
constexpr Signal kSpeechWithBackground{"SpeechWithBackground", speechWithBackground};

Pcm expectedOf(const DialogueSettings& settings, const Pcm& in, const std::vector<int>& call_sizes) {
    model::Dialogue dialogue(settings.rate_hz, settings.gain_floor, settings.gain_scale,
                             settings.voice_level);
    Pcm out;
    auto next = in.begin();
    for (const int frames : call_sizes) {
        const Pcm call_out = dialogue.process(Pcm(next, next + 2 * frames));
        out.insert(out.end(), call_out.begin(), call_out.end());
        next += 2 * frames;
    }
    return out;
}

void expectSameAsModel(const DialogueSettings& settings, const Pcm& in, const std::vector<int>& call_sizes) {
    const Pcm out = test::DialogueEffect(settings).process(in, call_sizes);
    const Pcm expected = expectedOf(settings, in, call_sizes);
    EXPECT_TRUE(test::closeSignal(out, expected,
                                  {.most = kMaxDifference, .usual = 1, .usual_share = kWantedShareWithinOne},
                                  {.rate_hz = settings.rate_hz}));
    testing::Test::RecordProperty("equal_percent", std::to_string(100 * test::shareWithin(0, out, expected)));
}

using Case = std::tuple<Signal, double, int>;

std::string nameOf(const testing::TestParamInfo<Case>& info) {
    std::string voice = std::to_string(std::get<1>(info.param));
    voice = voice.substr(0, voice.find('.') + 2);
    voice[voice.find('.')] = '_';
    return std::get<0>(info.param).name + ("Voice" + voice) + "At" + std::to_string(std::get<2>(info.param)) +
           "Hz";
}

class DialogueMatchesModel : public testing::TestWithParam<Case> {};

TEST_P(DialogueMatchesModel, InCallsOfOneBlock) {
    const auto& [signal, voice_level, rate_hz] = GetParam();
    const DialogueSettings settings{.rate_hz = rate_hz, .voice_level = voice_level};
    expectSameAsModel(settings, signal.make(), test::callsOf(test::hopFrames(rate_hz), kFrames));
}

INSTANTIATE_TEST_SUITE_P(Signals, DialogueMatchesModel,
                         testing::Combine(testing::Values(kSilence, kMonoCompatible, kAntiPhase, kHardPanned,
                                                          kFullScale, kSpeechWithBackground),
                                          testing::Values(0.0, 1.0, 2.5, 10.0),
                                          testing::Values(16000, 44100, 48000, 96000, 192000)),
                         nameOf);

class DialogueMatchesModelInCalls : public testing::TestWithParam<std::tuple<Signal, int, int>> {};

TEST_P(DialogueMatchesModelInCalls, OfEverySize) {
    const auto& [signal, call_frames, rate_hz] = GetParam();
    const DialogueSettings settings{.rate_hz = rate_hz, .voice_level = 2.5};
    const std::vector<int> calls =
        call_frames == 0 ? test::randomCalls(31, kFrames, 3000) : test::callsOf(call_frames, kFrames);
    expectSameAsModel(settings, signal.make(), calls);
}

INSTANTIATE_TEST_SUITE_P(Calls, DialogueMatchesModelInCalls,
                         testing::Combine(testing::Values(kFullScale, kSpeechWithBackground),
                                          testing::Values(1, 100, 512, 513, 1024, 4096, 0),
                                          testing::Values(44100, 48000, 96000, 192000)),
                         [](const auto& suite) {
                             const int call_frames = std::get<1>(suite.param);
                             return std::string(std::get<0>(suite.param).name) + "CallsOf" +
                                    (call_frames == 0 ? "Random" : std::to_string(call_frames)) + "FramesAt" +
                                    std::to_string(std::get<2>(suite.param)) + "Hz";
                         });

TEST(DialogueMatchesModel, ForOtherGains) {
    const Pcm in = speechWithBackground();
    for (const auto& [gain_floor, gain_scale] :
         {std::pair{0.25, 2.0}, std::pair{1.0, -0.5}, std::pair{0.0, 3.0}}) {
        SCOPED_TRACE(std::to_string(gain_floor) + ", " + std::to_string(gain_scale));
        const DialogueSettings settings{.gain_floor = gain_floor, .gain_scale = gain_scale, .voice_level = 2};
        expectSameAsModel(settings, in, test::callsOf(512, kFrames));
    }
}

TEST(DialogueMatchesModel, ForANegativeVoiceLevel) {
    for (const Signal& signal : {kMonoCompatible, kSpeechWithBackground}) {
        SCOPED_TRACE(signal.name);
        expectSameAsModel({.voice_level = -4}, signal.make(), test::callsOf(512, kFrames));
    }
}

// Some calls exceed the rings. The input ring then rejects samples one by one, and a call for more samples
// than the output ring holds gets silence.
TEST(DialogueMatchesModel, WhenCallsOverflowTheRings) {
    const std::vector<int> calls{100, 41000, 30000, 11000, 7, 20000, 41001, 512, 40959};
    std::size_t samples = 0;
    for (const int frames : calls) samples += 2 * static_cast<std::size_t>(frames);
    expectSameAsModel({.voice_level = 2}, test::bursts(5, static_cast<int>(samples)), calls);
}

}  // namespace
