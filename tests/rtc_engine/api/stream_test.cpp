// sonivex_stream_float: any block length, one constant delay.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "common_effects.h"
#include "support/effects/call_sizes.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::CommonEffect;
using test::Pcm;
using test::Planes;

// As long as several of the longest blocks, with bursts that make the limiters work.
Pcm programme(int channels, int frames) {
    return test::bursts(3, channels * frames);
}

constexpr int kProgramme_frames = 20480;

TEST(EffectStream, DoesNotDependOnHowItIsCutIntoCalls) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const Planes in = test::planesOf(programme(kind.channels_in, kProgramme_frames), kind.channels_in);
        const auto in_whole_calls = test::callsOf(4096, kProgramme_frames);
        const Planes expected = test::streamed(kind.make().get(), in, in_whole_calls);
        EXPECT_NE(test::samplesOf(expected), Pcm(test::samplesOf(expected).size(), 0));
        for (const int longest : {1, 7, 300, 8192}) {
            const auto calls =
                test::randomCalls(static_cast<std::uint64_t>(longest), kProgramme_frames, longest);
            EXPECT_EQ(test::streamed(kind.make().get(), in, calls), expected) << "calls of up to " << longest;
        }
    }
}

TEST(EffectStream, HasTheSamplesOfTheEffectsOwnFunctionsOneBlockLater) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const int frames = kProgramme_frames / kind.block_frames * kind.block_frames;
        const Pcm in = programme(kind.channels_in, frames);
        const Pcm expected =
            test::delayed(kind.by_aem_functions(in, kind.block_frames), kind.block_frames, kind.channels_out);
        const auto effect = kind.make();
        const auto calls = test::randomCalls(5, static_cast<std::size_t>(frames), 1000);
        EXPECT_TRUE(test::sameSignal(
            test::samplesOf(test::streamed(effect.get(), test::planesOf(in, kind.channels_in), calls)),
            expected, {.channels = kind.channels_out}));
        EXPECT_EQ(sonivex_stream_latency_frames(effect.get()), kind.block_frames + kind.own_delay_frames);
    }
}

// Streams one loud frame in silence. Returns how many frames later the first sample of at least half the peak
// is.
int delayOfClick(const CommonEffect& kind) {
    constexpr std::size_t kClick_frame = 3000;
    Planes in(static_cast<std::size_t>(kind.channels_in), std::vector<float>(kProgramme_frames, 0.0F));
    for (auto& plane : in) plane[kClick_frame] = 0.5F;
    const Planes out = test::streamed(kind.make().get(), in, test::callsOf(256, kProgramme_frames));
    const auto& left = out.front();
    const float peak = *std::max_element(left.begin(), left.end());
    EXPECT_GT(peak, 0.05F);
    const auto first =
        std::find_if(left.begin(), left.end(), [=](float sample) { return sample >= peak / 2; });
    return static_cast<int>(first - left.begin()) - static_cast<int>(kClick_frame);
}

TEST(EffectStream, DelaysAClickByTheLatencyThatItReports) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const int delay = delayOfClick(kind) - sonivex_stream_latency_frames(kind.make().get());
        if (kind.name.find("surround") == std::string::npos) {
            EXPECT_EQ(delay, 0);
        } else {
            // The way from the loudspeaker to the ear.
            const bool is_mega_bass = kind.name.find("type 13") != std::string::npos;
            EXPECT_GE(delay, is_mega_bass ? 65 : 25);
            EXPECT_LE(delay, is_mega_bass ? 80 : 40);
        }
    }
}

TEST(EffectStream, SoundsForTheTailThatItReportsAndNoLonger) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        constexpr std::size_t kSound_frames = 1024;
        const auto effect = kind.make();
        const auto end = static_cast<std::ptrdiff_t>(kSound_frames) +
                         sonivex_stream_latency_frames(effect.get()) + sonivex_tail_frames(effect.get());
        const auto frames = static_cast<std::size_t>(end) + 9000;
        Pcm in = test::noise(9, static_cast<int>(kSound_frames) * kind.channels_in, 30000);
        in.resize(frames * static_cast<std::size_t>(kind.channels_in));
        const Planes out = test::streamed(effect.get(), test::planesOf(in, kind.channels_in),
                                          test::randomCalls(2, frames, 5000));
        for (const auto& plane : out) {
            EXPECT_TRUE(
                std::all_of(plane.begin() + end, plane.end(), [](float sample) { return sample == 0.0F; }));
            EXPECT_TRUE(
                std::any_of(plane.begin(), plane.begin() + end, [](float sample) { return sample != 0.0F; }));
        }
        if (sonivex_tail_frames(effect.get()) > 0) {
            // The end fades out below the steps of 16 bits: that of MegaBass, which passes two responses,
            // early.
            const auto late = end - sonivex_tail_frames(effect.get()) * 2 / 3;
            EXPECT_TRUE(
                std::any_of(out[0].begin() + late, out[0].begin() + end, [](float s) { return s != 0.0F; }));
        }
    }
}

// Streams in place: output plane c is input plane `plane_of[c]`.
Planes streamedInPlace(SonivexEffect* effect, Planes planes, const std::vector<std::size_t>& plane_of) {
    const std::size_t frames = planes.front().size();
    std::size_t done = 0;
    for (const int call : test::randomCalls(11, frames, 900)) {
        std::vector<const float*> in;
        std::vector<float*> out;
        for (const auto& plane : planes) in.push_back(plane.data() + done);
        for (const std::size_t plane : plane_of) out.push_back(planes[plane].data() + done);
        EXPECT_EQ(sonivex_stream_float(effect, in.data(), out.data(), call), SONIVEX_OK);
        done += static_cast<std::size_t>(call);
    }
    Planes result;
    for (const std::size_t plane : plane_of) result.push_back(planes[plane]);
    return result;
}

TEST(EffectStream, MayWriteOverItsInputInAnyOrderOfPlanes) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        constexpr int kFrames = 10000;
        const Planes in = test::planesOf(programme(kind.channels_in, kFrames), kind.channels_in);
        const Planes expected = test::streamed(kind.make().get(), in, test::callsOf(1000, kFrames));
        std::vector<std::size_t> places(static_cast<std::size_t>(kind.channels_out));
        std::iota(places.begin(), places.end(), std::size_t{0});
        EXPECT_EQ(streamedInPlace(kind.make().get(), in, places), expected);
        std::reverse(places.begin(), places.end());
        EXPECT_EQ(streamedInPlace(kind.make().get(), in, places), expected);
    }
}

TEST(EffectStream, RoundsToNearestWhateverTheInputHolds) {
    const auto normalizer = test::makeNormalizer(1);
    constexpr float kStep = 1.0F / 32768.0F;
    Planes in = {std::vector<float>(1024, 0.0F)};
    in[0][0] = 0.5F * kStep;
    in[0][1] = 1.5F * kStep;
    in[0][2] = std::numeric_limits<float>::quiet_NaN();
    in[0][3] = std::numeric_limits<float>::infinity();
    in[0][4] = -7.0F;
    Planes as_integers = in;
    as_integers[0][0] = 0.0F;
    as_integers[0][1] = 2.0F * kStep;
    as_integers[0][2] = 0.0F;
    as_integers[0][3] = 32767.0F * kStep;
    as_integers[0][4] = -1.0F;
    const Planes out = test::streamed(normalizer.get(), in, {1024});
    EXPECT_EQ(out, test::streamed(test::makeNormalizer(1).get(), as_integers, {1024}));
    EXPECT_EQ(out[0][512], 0.0F);
    EXPECT_GT(out[0][512 + 3], 0.9F);
    EXPECT_LT(out[0][512 + 4], -0.9F);
}

}  // namespace
