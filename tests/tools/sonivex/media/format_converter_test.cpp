#include "format_converter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

TEST(FormatConverter, PassesFramesOfTheTargetSpecThroughUntouched) {
    FormatConverter converter(test::floatSpec(2));
    FramePtr frame = test::floatFrame(2, 64, [](int, int) { return 0.5F; });
    const uint8_t* samples = frame->data[0];
    frame = converter.convert(std::move(frame));
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->data[0], samples);
    EXPECT_EQ(converter.flush(), nullptr);
}

TEST(FormatConverter, FollowsEveryFormatChangeWithoutLosingSound) {
    FormatConverter converter(test::floatSpec(2, 48000));
    int frames = 0;
    const auto count = [&](const FramePtr& frame) {
        if (frame == nullptr) return;
        EXPECT_TRUE(specOf(*frame) == test::floatSpec(2, 48000));
        frames += frame->nb_samples;
    };
    const auto half = [](int, int) { return 0.5F; };
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(2, 4410, half, 44100)));
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(1, 4800, half, 48000)));
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(2, 4800, half, 48000)));
    count(converter.flush());
    EXPECT_EQ(frames, 3 * 48000);  // one second of each
}

AudioSpec doubleSpec(int rate_hz) {
    AudioSpec spec = test::floatSpec(1, rate_hz);
    spec.format = AV_SAMPLE_FMT_DBL;
    return spec;
}

using Signal = std::function<double(double)>;  // of the time in seconds

// Converts a mono signal to another rate, in pieces of 997 frames.
std::vector<double> resampled(const Signal& signal, int frames, int from_hz, int to_hz, bool use_soxr) {
    FormatConverter converter(doubleSpec(to_hz), {.use_soxr = use_soxr});
    std::vector<double> out;
    const auto take = [&](const FramePtr& frame) {
        if (frame == nullptr) return;
        const auto* samples = reinterpret_cast<const double*>(frame->data[0]);
        out.insert(out.end(), samples, samples + frame->nb_samples);
    };
    for (int start = 0; start < frames; start += 997) {
        const int length = std::min(997, frames - start);
        FramePtr frame = makeFrame(doubleSpec(from_hz), length);
        for (int i = 0; i < length; ++i)
            reinterpret_cast<double*>(frame->data[0])[i] = signal(static_cast<double>(start + i) / from_hz);
        take(converter.convert(std::move(frame)));
    }
    take(converter.flush());
    return out;
}

// Fits a sine of a known frequency to the middle of a signal.
struct SineFit {
    double gain;        // of a sine of amplitude 1
    double phase_rad;   // 0 for a sine that is 0 at the time 0
    double residue_db;  // everything else, in relation to a sine of amplitude 1
};

SineFit fitSine(const std::vector<double>& samples, double frequency_hz, int rate_hz) {
    const size_t first = samples.size() / 4;
    const size_t last = samples.size() * 3 / 4;
    const auto angle = [&](size_t i) {
        return 2.0 * std::numbers::pi * frequency_hz * static_cast<double>(i) / rate_hz;
    };
    double ss = 0.0, sc = 0.0, cc = 0.0, xs = 0.0, xc = 0.0;
    for (size_t i = first; i < last; ++i) {
        const double s = std::sin(angle(i));
        const double c = std::cos(angle(i));
        ss += s * s;
        sc += s * c;
        cc += c * c;
        xs += samples[i] * s;
        xc += samples[i] * c;
    }
    const double determinant = ss * cc - sc * sc;
    const double a = (xs * cc - xc * sc) / determinant;
    const double b = (xc * ss - xs * sc) / determinant;
    double rest = 0.0;
    for (size_t i = first; i < last; ++i)
        rest += std::pow(samples[i] - a * std::sin(angle(i)) - b * std::cos(angle(i)), 2);
    rest /= static_cast<double>(last - first);
    return {std::hypot(a, b), std::atan2(b, a), 10.0 * std::log10(2.0 * rest + 1e-30)};
}

double rmsDb(const std::vector<double>& samples) {
    double sum = 1e-30;
    for (size_t i = samples.size() / 4; i < samples.size() * 3 / 4; ++i) sum += samples[i] * samples[i];
    return 10.0 * std::log10(2.0 * sum / (static_cast<double>(samples.size()) / 2.0));
}

struct Rates {
    int from_hz;
    int to_hz;
};
const std::vector<Rates> kRates = {{96000, 48000},  {88200, 44100}, {22050, 44100}, {32000, 48000},
                                   {192000, 48000}, {48000, 44100}, {8000, 16000}};

class Resampling : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Engines, Resampling, testing::Values(true, false),
                         [](const auto& use_soxr) { return use_soxr.param ? "Soxr" : "Own"; });

TEST_P(Resampling, KeepsLevelAndTimeOfATone) {
    for (const auto [from_hz, to_hz] : kRates) {
        const int lower_hz = std::min(from_hz, to_hz);
        for (const double share : {0.01, 0.1, 0.4, 0.44}) {
            const double frequency_hz = share * lower_hz + 0.3;
            SCOPED_TRACE(std::to_string(from_hz) + " -> " + std::to_string(to_hz) + ": " +
                         std::to_string(frequency_hz) + " Hz");
            const auto sine = [&](double t) { return std::sin(2.0 * std::numbers::pi * frequency_hz * t); };
            const auto out = resampled(sine, from_hz, from_hz, to_hz, GetParam());
            const SineFit fit = fitSine(out, frequency_hz, to_hz);
            EXPECT_NEAR(20.0 * std::log10(fit.gain), 0.0, 0.01);
            EXPECT_NEAR(fit.phase_rad / (2.0 * std::numbers::pi * frequency_hz) * to_hz, 0.0, 0.001);
            EXPECT_LT(fit.residue_db, GetParam() ? -140.0 : -90.0);
        }
    }
}

TEST_P(Resampling, RejectsTonesAboveHalfTheNewRate) {
    for (const auto [from_hz, to_hz] : kRates) {
        if (from_hz <= to_hz) continue;
        for (const double share : {0.55, 0.6, 0.7, 0.9}) {
            const double frequency_hz = share * to_hz;
            if (frequency_hz > 0.49 * from_hz) continue;
            SCOPED_TRACE(std::to_string(from_hz) + " -> " + std::to_string(to_hz) + ": " +
                         std::to_string(frequency_hz) + " Hz");
            const auto sine = [&](double t) { return std::sin(2.0 * std::numbers::pi * frequency_hz * t); };
            EXPECT_LT(rmsDb(resampled(sine, from_hz, from_hz, to_hz, GetParam())),
                      GetParam() ? -140.0 : -90.0);
        }
    }
}

TEST_P(Resampling, MakesTheLengthThatTheRatesGive) {
    for (const auto [from_hz, to_hz] : kRates) {
        for (const int frames : {1, 2, 10, 999, 1000, 4801, 50'001}) {
            SCOPED_TRACE(std::to_string(from_hz) + " -> " + std::to_string(to_hz) + ", " +
                         std::to_string(frames));
            const auto out = resampled([](double) { return 0.5; }, frames, from_hz, to_hz, GetParam());
            EXPECT_EQ(static_cast<int64_t>(out.size()),
                      std::llround(static_cast<double>(frames) * to_hz / from_hz));
        }
    }
}

TEST(FormatConverter, KeepsSixteenBitSamplesExactInEveryWiderFormat) {
    AudioSpec narrow = test::floatSpec(1);
    narrow.format = AV_SAMPLE_FMT_S16;
    FramePtr original = makeFrame(narrow, 65536);
    auto* samples = reinterpret_cast<int16_t*>(original->data[0]);
    for (int i = 0; i < 65536; ++i) samples[i] = static_cast<int16_t>(i - 32768);
    for (const AVSampleFormat format :
         {AV_SAMPLE_FMT_S32, AV_SAMPLE_FMT_S32P, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_DBL,
          AV_SAMPLE_FMT_DBLP, AV_SAMPLE_FMT_S64}) {
        SCOPED_TRACE(av_get_sample_fmt_name(format));
        AudioSpec wide = narrow;
        wide.format = format;
        FormatConverter widen(wide);
        FormatConverter back(narrow);
        const FramePtr wider = widen.convert(FramePtr(av_frame_clone(original.get())));
        const FramePtr again = back.convert(FramePtr(av_frame_clone(wider.get())));
        ASSERT_EQ(again->nb_samples, 65536);
        EXPECT_EQ(std::memcmp(again->data[0], original->data[0], 65536 * sizeof(int16_t)), 0);
    }
}

TEST(FormatConverter, RoundsTwentyFourBitsInThirtyTwoBitContainers) {
    AudioSpec spec = test::floatSpec(1);
    spec.format = AV_SAMPLE_FMT_S32;
    FormatConverter converter(spec, {.dither = false, .bits = 24});
    FramePtr frame = makeFrame(spec, 3);
    auto* samples = reinterpret_cast<int32_t*>(frame->data[0]);
    samples[0] = 100 * 256 + 200;
    samples[1] = -100 * 256 - 200;
    samples[2] = 7 * 256;
    const FramePtr out = converter.convert(std::move(frame));
    const auto* rounded = reinterpret_cast<const int32_t*>(out->data[0]);
    EXPECT_EQ(std::vector<int32_t>(rounded, rounded + 3),
              (std::vector<int32_t>{101 * 256, -101 * 256, 7 * 256}));
}

TEST(FormatConverter, MixesByTheNamesOfTheLoudspeakers) {
    AudioSpec from = test::floatSpec(8);
    ASSERT_EQ(av_channel_layout_from_string(&from.layout, "7.1(wide)"), 0);
    FramePtr frame = makeFrame(from, 1);
    auto* samples = reinterpret_cast<float*>(frame->data[0]);
    for (int c = 0; c < 8; ++c) samples[c] = c == 6 ? 0.5F : 0.0F;  // front left of centre
    FormatConverter converter(test::floatSpec(8));
    const auto out = test::floatsOf(*converter.convert(std::move(frame)));
    const float share = 0.5F * std::sqrt(0.5F);
    const std::vector<float> expected = {share, 0, share, 0, 0, 0, 0, 0};
    for (size_t c = 0; c < 8; ++c) EXPECT_NEAR(out[c], expected[c], 1e-6F) << c;
}

TEST(FormatConverter, DoesNotScaleAMixThatExceedsFullScale) {
    FormatConverter converter(test::floatSpec(2));
    FramePtr frame = test::floatFrame(6, 1, [](int, int) { return 0.9F; });
    const auto out = test::floatsOf(*converter.convert(std::move(frame)));
    EXPECT_NEAR(out[0], 0.9F * (1.0F + 2.0F * std::sqrt(0.5F)), 1e-5F);
}

TEST(FormatConverter, FailsOnMoreChannelsThanItCanMix) {
    FormatConverter converter(test::floatSpec(2));
    try {
        converter.convert(makeFrame(test::floatSpec(65), 64));
        FAIL() << "it mixes";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::Internal);
        EXPECT_EQ(std::string(failure.what()).rfind("cannot convert the audio: ", 0), 0U) << failure.what();
    }
}

TEST(AudioSpec, ReplacesAnUnspecifiedLayoutByTheDefaultOfItsChannelCount) {
    FramePtr frame = test::floatFrame(6, 16, [](int, int) { return 0.0F; });
    frame->ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
    const AudioSpec spec = specOf(*frame);
    const AVChannelLayout expected = defaultLayout(6);
    EXPECT_EQ(av_channel_layout_compare(&spec.layout, &expected), 0);
}

TEST(AudioSpec, TrimmingAFrameKeepsTheChosenSamples) {
    const FramePtr frame = test::countingFrame(0, 100);
    trimFrame(*frame, 10, 3);
    EXPECT_EQ(test::floatsOf(*frame), (std::vector<float>{10.0F, 11.0F, 12.0F}));
}

}  // namespace
