#include "level_stage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

using Signal = std::function<double(int frame, int channel)>;

AudioSpec doubleSpec(int channels, int rate_hz) {
    AudioSpec spec = test::floatSpec(channels, rate_hz);
    spec.format = AV_SAMPLE_FMT_DBL;
    return spec;
}

struct Levelled {
    std::vector<double> samples;
    Loudness loudness;
};

// Sends a signal through a stage in pieces.
Levelled level(const Signal& signal, int frames, const LevelPlan& plan, int channels = 1, int rate_hz = 48000,
               int piece = 1000) {
    const AudioSpec spec = doubleSpec(channels, rate_hz);
    Levelled result;
    LoudnessMeter meter(spec, Peaks::SamplesAndTruePeak);
    LevelStage stage(spec, plan, [&](const FramePtr& frame) {
        meter.add(*frame);
        const auto* samples = reinterpret_cast<const double*>(frame->data[0]);
        result.samples.insert(result.samples.end(), samples, samples + frame->nb_samples * channels);
    });
    for (int start = 0; start < frames; start += piece) {
        FramePtr frame = makeFrame(spec, std::min(piece, frames - start));
        auto* sample = reinterpret_cast<double*>(frame->data[0]);
        for (int i = 0; i < frame->nb_samples; ++i) {
            for (int c = 0; c < channels; ++c) *sample++ = signal(start + i, c);
        }
        stage.push(std::move(frame));
    }
    stage.finish();
    result.loudness = meter.result();
    return result;
}

double sine(double frequency_hz, int rate_hz, int frame, double phase_rad = 0.0) {
    return std::sin(2.0 * std::numbers::pi * frequency_hz * frame / rate_hz + phase_rad);
}

TEST(LevelStage, MultipliesByThePlainGainWithoutALimiter) {
    const Signal signal = [](int i, int) { return 0.3 * sine(997.0, 48000, i); };
    const Levelled out = level(signal, 5000, {.gain_db = -20.0});
    ASSERT_EQ(out.samples.size(), 5000U);
    for (int i = 0; i < 5000; ++i)
        EXPECT_NEAR(out.samples[static_cast<size_t>(i)], 0.1 * signal(i, 0), 1e-15);
}

TEST(LevelStage, HoldsEveryTruePeakBelowTheCeiling) {
    std::mt19937 random(5);
    std::normal_distribution<double> normal;
    std::vector<double> noise(400'000);
    for (double& sample : noise) sample = normal(random);
    const auto hiss = [&](int i, int c) { return noise[static_cast<size_t>(i * 7 + c)]; };
    const std::vector<std::pair<const char*, Signal>> signals = {
        {"noise", [&](int i, int c) { return 0.5 * hiss(i, c); }},
        {"bursts of noise",
         [&](int i, int c) { return i % 9000 < 60 ? 2.0 * hiss(i, c) : 0.001 * hiss(i, c); }},
        {"clicks", [](int i, int) { return i % 4801 == 17 ? 1.0 : 0.0; }},
        {"square", [](int i, int) { return i / 50 % 2 == 0 ? 1.0 : -1.0; }},
        // The peaks of this tone lie halfway between samples, 3 dB above them.
        {"quarter of the rate", [](int i, int) { return 0.7 * sine(0.25, 1, i, std::numbers::pi / 4.0); }},
        {"tone bursts", [](int i, int) { return i % 5000 < 300 ? sine(0.21, 1, i, 0.4) : 0.0; }},
        {"high tone", [](int i, int) { return sine(0.39, 1, i, 0.3); }},
        {"one loud channel",
         [](int i, int c) { return c == 0 ? sine(0.03, 1, i) : 0.01 * sine(0.11, 1, i); }},
    };
    for (const double ceiling_dbtp : {-1.0, -9.0}) {
        for (const auto& [name, signal] : signals) {
            for (const int rate_hz : {16000, 44100, 48000}) {
                SCOPED_TRACE(std::string(name) + " at " + std::to_string(rate_hz) + " Hz");
                const int channels = rate_hz == 44100 ? 6 : 2;
                LevelPlan plan = {.gain_db = 12.0,
                                  .ceiling_dbtp = ceiling_dbtp,
                                  .limit_dbtp = ceiling_dbtp - 0.1,
                                  .limits = true};
                Levelled out = level(signal, rate_hz, plan, channels, rate_hz);
                for (int trial = 0; trial < kMostTrials && lowerLimit(plan, out.loudness); ++trial)
                    out = level(signal, rate_hz, plan, channels, rate_hz);
                ASSERT_EQ(out.samples.size(), static_cast<size_t>(rate_hz) * static_cast<size_t>(channels));
                EXPECT_LE(out.loudness.true_peak_dbtp.value(), ceiling_dbtp);
                EXPECT_GE(out.loudness.true_peak_dbtp.value(), ceiling_dbtp - 1.0)
                    << "it limits more than needed";
            }
        }
    }
}

TEST(LevelStage, PassesSoundBelowTheCeilingThroughInPlace) {
    const Signal signal = [](int i, int c) { return 0.2 * sine(440.0 + 100.0 * c, 48000, i); };
    const Levelled out =
        level(signal, 48000, {.gain_db = 6.0, .ceiling_dbtp = -1.0, .limit_dbtp = -1.1, .limits = true}, 2);
    const double gain = std::pow(10.0, 6.0 / 20.0);
    for (int i = 1000; i < 47000; ++i) {
        for (int c = 0; c < 2; ++c)
            ASSERT_NEAR(out.samples[static_cast<size_t>(2 * i + c)], gain * signal(i, c), 1e-5) << i;
    }
}

TEST(LevelStage, LimitsOnlyAroundAPeakAndAllChannelsAlike) {
    // A burst in one channel, in a quiet tone in the other.
    const Signal signal = [](int i, int c) {
        if (c == 1) return 0.1 * sine(440.0, 48000, i);
        return i >= 24000 && i < 24480 ? 0.9 * sine(1000.0, 48000, i) : 0.0;
    };
    const Levelled out =
        level(signal, 72000, {.gain_db = 12.0, .ceiling_dbtp = -1.0, .limit_dbtp = -1.1, .limits = true}, 2);
    const double gain = std::pow(10.0, 12.0 / 20.0);
    const auto gainAt = [&](int from, int to) {
        double in_energy = 0.0;
        double out_energy = 0.0;
        for (int i = from; i < to; ++i) {
            in_energy += std::pow(signal(i, 1), 2);
            out_energy += std::pow(out.samples[static_cast<size_t>(2 * i + 1)], 2);
        }
        return 20.0 * std::log10(std::sqrt(out_energy / in_energy) / gain);
    };
    EXPECT_NEAR(gainAt(2400, 22800), 0.0, 0.01);    // until the limiter sees the burst, 20 ms ahead
    EXPECT_NEAR(gainAt(24100, 24400), -12.2, 1.0);  // 12 dB and the burst's peak above the ceiling
    EXPECT_NEAR(gainAt(48000, 69600), 0.0, 0.01);   // half a second later
}

TEST(LevelStage, IsAsLongAsItsInputHoweverThatIsCut) {
    const Signal signal = [](int i, int) { return 2.0 * sine(300.0, 44100, i); };
    const LevelPlan plan = {.gain_db = 0.0, .ceiling_dbtp = -1.0, .limit_dbtp = -1.1, .limits = true};
    const Levelled whole = level(signal, 30'001, plan, 1, 44100, 30'001);
    ASSERT_EQ(whole.samples.size(), 30'001U);
    for (const int piece : {1, 77, 1024, 9000}) {
        const Levelled cut = level(signal, 30'001, plan, 1, 44100, piece);
        ASSERT_EQ(cut.samples.size(), 30'001U) << piece;
        for (size_t i = 0; i < cut.samples.size(); ++i)
            ASSERT_NEAR(cut.samples[i], whole.samples[i], 1e-9) << piece;
    }
    for (const int frames : {1, 2, 50})
        EXPECT_EQ(level(signal, frames, plan).samples.size(), static_cast<size_t>(frames));
}

TEST(LevelStage, PutsNothingOutForNothing) {
    EXPECT_TRUE(
        level([](int, int) { return 1.0; }, 0, {.ceiling_dbtp = -1.0, .limit_dbtp = -1.1, .limits = true})
            .samples.empty());
}

}  // namespace
