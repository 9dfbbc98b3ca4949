// Compares the normalizer with its independent model, bit by bit.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>

#include "models/normalizer_model.h"
#include "support/effects/normalizer_effect.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::Pcm;
using test::Random;

// Feeds both with the same calls until the input is used up. A call may exceed the capacity of a ring.
void expectSameAsModel(const Pcm& in, int channels, const std::function<int()>& next_frames) {
    test::NormalizerEffect normalizer(channels);
    model::Normalizer reference(static_cast<std::size_t>(channels));
    Pcm out;
    Pcm expected;
    for (std::size_t done = 0; done < in.size();) {
        const int frames_left = static_cast<int>(in.size() - done) / channels;
        const int frames = std::min(next_frames(), frames_left);
        if (frames == 0) break;
        const auto samples = static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
        const auto first = in.begin() + static_cast<std::ptrdiff_t>(done);
        const Pcm call(first, first + static_cast<std::ptrdiff_t>(samples));
        test::append(out, normalizer.process(call));
        test::append(expected, reference.process(call));
        done += samples;
    }
    ASSERT_TRUE(test::sameSignal(out, expected, {.channels = channels}));
}

struct CallSizes {
    const char* name;
    int frames;  // per call; 0: random, -1: random and at times beyond the capacity of the rings
};

void PrintTo(const CallSizes& sizes, std::ostream* stream) {
    *stream << sizes.name << " frames";
}

std::function<int()> callsOf(const CallSizes& sizes, int channels, Random& random) {
    if (sizes.frames > 0) return [sizes] { return sizes.frames; };
    if (sizes.frames == 0) return [&random] { return random.between(1, 3000); };
    // Long calls overflow both rings; short calls are then served from what the long ones left behind.
    return [&random, channels] {
        const int samples =
            random.between(0, 2) == 0 ? random.between(82000, 200000) : random.between(1, 60000);
        return samples / channels + 1;
    };
}

class NormalizerMatchesModel : public testing::TestWithParam<std::tuple<int, CallSizes>> {
  protected:
    void expectSame(const Pcm& in) {
        const auto& [channels, sizes] = GetParam();
        constexpr std::uint64_t kSeed = 99;
        SCOPED_TRACE("seed " + std::to_string(kSeed));
        Random random(kSeed);
        Pcm signal = in;
        // Long enough for about six of the longest calls.
        while (sizes.frames < 0 && signal.size() < 1200000) signal.insert(signal.end(), in.begin(), in.end());
        signal.resize(signal.size() / static_cast<std::size_t>(channels) *
                      static_cast<std::size_t>(channels));
        expectSameAsModel(signal, channels, callsOf(sizes, channels, random));
    }
    static int channels() { return std::get<0>(GetParam()); }
    static int samplesOfFrames(int frames) { return frames * channels(); }
};

TEST_P(NormalizerMatchesModel, ForSpeech) {
    expectSame(test::recordedSpeech(channels()));
}

TEST_P(NormalizerMatchesModel, ForQuietSpeech) {
    expectSame(test::scaled(test::recordedSpeech(channels()), 1, 17));
}

TEST_P(NormalizerMatchesModel, ForSpeechThatGrowsLouder) {
    const Pcm speech = test::recordedSpeech(channels());
    Pcm growing;
    for (const int loudness : {1, 3, 8, 20, 60}) {
        const Pcm part = test::scaled(speech, loudness, 20);
        growing.insert(growing.end(), part.begin(), part.begin() + samplesOfFrames(12000));
    }
    expectSame(growing);
}

TEST_P(NormalizerMatchesModel, ForNoise) {
    for (const int amplitude : {300, 5000, 32767})
        expectSame(test::noise(7, samplesOfFrames(8000), amplitude));
}

TEST_P(NormalizerMatchesModel, ForBursts) {
    expectSame(test::bursts(11, samplesOfFrames(20000)));
}

TEST_P(NormalizerMatchesModel, ForSweeps) {
    for (const int amplitude : {3000, 32767}) expectSame(test::sweep(12000, channels(), amplitude));
}

TEST_P(NormalizerMatchesModel, ForFullScaleSquareWaves) {
    expectSame(test::square(samplesOfFrames(8000), 37, 32767));
}

TEST_P(NormalizerMatchesModel, ForSilence) {
    expectSame(Pcm(static_cast<std::size_t>(samplesOfFrames(5000))));
}

INSTANTIATE_TEST_SUITE_P(
    , NormalizerMatchesModel,
    testing::Combine(testing::Values(1, 2, 3, 6, 8),
                     testing::Values(CallSizes{"1", 1}, CallSizes{"100", 100}, CallSizes{"512", 512},
                                     CallSizes{"513", 513}, CallSizes{"1024", 1024}, CallSizes{"4096", 4096},
                                     CallSizes{"RandomlyMany", 0}, CallSizes{"RingOverflowing", -1})),
    [](const auto& suite) {
        return std::to_string(std::get<0>(suite.param)) + "ChannelsCallsOf" + std::get<1>(suite.param).name +
               "Frames";
    });

RC_GTEST_PROP(NormalizerMatchesModelProperty, ForAnyChannelCountAndCallSizes, ()) {
    const auto seed = *rc::gen::arbitrary<std::uint64_t>();
    const int channels = *rc::gen::inRange(1, 21);
    const int longest_call = *rc::gen::elementOf(std::vector<int>{3, 600, 2000, 9000});
    Random random(seed);
    const Pcm in = test::bursts(random.bits(), channels * random.between(1, 12000));
    expectSameAsModel(in, channels, [&] { return random.between(1, longest_call); });
    RC_ASSERT(!testing::Test::HasFailure());
}

}  // namespace
