// Samples of more than 16 bits on their way through the 16 bits of the effects.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

constexpr double kStep = 1.0 / 32768.0;
// The normalizer raises quiet sound by 20 dB; its limiters then settle at 0.998 of it each.
constexpr double kGain = 10.0 * (0.0999 / 0.1001) * (0.0999 / 0.1001);
constexpr size_t kSettled_frames = 96'000;

class RenderDither : public test::RenderTest {
  protected:
    // Writes ten seconds of mono noise at -60 dBFS with more than 16 bits.
    std::string makeNoise(const std::string& name, const std::string& codec) {
        test::ffmpeg({"-f", "lavfi", "-i", "anoisesrc=r=48000:d=10:a=0.00173:c=white:seed=7", "-c:a", codec,
                      file(name)});
        return file(name);
    }

    // Returns the power of the effect's own rounding. Noise of 16 bits shows it alone.
    double effectErrorPower();

    std::string bytesOf(const std::string& name) const {
        std::ifstream stream(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

// Returns the error of the output in steps of 16 bits before the gain.
std::vector<double> errorSteps(const std::string& in, const std::string& out) {
    const auto before = test::decode(in);
    const auto after = test::decode(out);
    EXPECT_EQ(before.size(), after.size());
    std::vector<double> error;
    for (size_t i = kSettled_frames; i < std::min(before.size(), after.size()); ++i)
        error.push_back((static_cast<double>(after[i]) / kGain - static_cast<double>(before[i])) / kStep);
    return error;
}

double meanOf(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    return sum / static_cast<double>(values.size());
}

double powerOf(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += value * value;
    return sum / static_cast<double>(values.size());
}

// Returns the correlation of a signal with itself `lag` samples later, as a share of its power. White noise
// has 0.
double likeness(const std::vector<double>& values, size_t lag) {
    double sum = 0.0;
    for (size_t i = lag; i < values.size(); ++i) sum += values[i] * values[i - lag];
    return sum / static_cast<double>(values.size()) / powerOf(values);
}

double RenderDither::effectErrorPower() {
    const std::string in = makeNoise("narrow.wav", "pcm_s16le");
    render({in, file("narrow-out.wav")});
    return powerOf(errorSteps(in, file("narrow-out.wav")));
}

TEST_F(RenderDither, LeavesNoOffsetAndOnlyWhiteNoiseFromMoreThanSixteenBits) {
    const double own_power = effectErrorPower();
    EXPECT_LT(own_power, 0.03);
    for (const char* codec : {"pcm_s24le", "pcm_s32le", "pcm_f32le"}) {
        SCOPED_TRACE(codec);
        const std::string in = makeNoise(std::string(codec) + ".wav", codec);
        const std::string out = file(std::string(codec) + "-out.wav");
        render({in, out});
        const auto error = errorSteps(in, out);
        // 0.005 steps are six standard errors. Truncation would give 0.5 steps, 5 after the gain.
        EXPECT_NEAR(meanOf(error), 0.0, 0.005);
        EXPECT_NEAR(powerOf(error), 0.25 + own_power, 0.005);
        for (size_t lag = 1; lag <= 16; ++lag) EXPECT_NEAR(likeness(error, lag), 0.0, 0.01) << lag;
    }
}

TEST_F(RenderDither, RoundsWithoutDitherWhenAsked) {
    const std::string in = makeNoise("in.wav", "pcm_s24le");
    render({in, file("out.wav"), "--no-dither"});
    const auto error = errorSteps(in, file("out.wav"));
    EXPECT_NEAR(meanOf(error), 0.0, 0.005);
    EXPECT_NEAR(powerOf(error), 1.0 / 12.0 + effectErrorPower(), 0.002);
}

TEST_F(RenderDither, KeepsSixteenBitSoundExactInEveryContainer) {
    test::makeQuietSpeech(file("in.wav"), 2);
    render({file("in.wav"), file("out.wav")});
    const auto expected = test::decode(file("out.wav"));
    for (const char* codec : {"pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le"}) {
        SCOPED_TRACE(codec);
        test::ffmpeg({"-i", file("in.wav"), "-c:a", codec, file("wide.wav")});
        render({file("wide.wav"), file("wide-out.wav"), "--force"});
        EXPECT_EQ(test::decode(file("wide-out.wav")), expected);
    }
}

TEST_F(RenderDither, KeepsDigitalSilence) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "anullsrc=r=96000:cl=5.1", "-t", "1", "-c:a", "pcm_s24le", file("in.wav")});
    render({file("in.wav"), file("out.wav")});
    const auto samples = test::decode(file("out.wav"));
    EXPECT_EQ(samples.size(), 6U * 48000U);
    EXPECT_TRUE(std::all_of(samples.begin(), samples.end(), [](float sample) { return sample == 0.0F; }));
}

TEST_F(RenderDither, DithersTheFewerBitsOfTheOutput) {
    // 8 bits in and out: the effect makes 16 bits of a tone between them.
    test::ffmpeg({"-f", "lavfi", "-i", "aevalsrc=0.02*sin(2*PI*t*997.1):s=48000:d=4", "-c:a", "pcm_u8",
                  file("in.wav")});
    render({file("in.wav"), file("out.wav"), "--effect", "surround"});
    test::ffmpeg({"-i", file("in.wav"), "-c:a", "pcm_s16le", file("in16.wav")});
    render({file("in16.wav"), file("out16.wav"), "--effect", "surround"});
    const auto narrow = test::decode(file("out.wav"));
    const auto wide = test::decode(file("out16.wav"));
    ASSERT_EQ(narrow.size(), wide.size());
    std::vector<double> error;
    for (size_t i = 0; i < wide.size(); ++i)
        error.push_back((static_cast<double>(narrow[i]) - wide[i]) * 128.0);
    EXPECT_NEAR(meanOf(error), 0.0, 0.01);
    EXPECT_NEAR(powerOf(error), 0.25, 0.01);
    EXPECT_EQ(test::probe(file("out.wav"))["streams"][0]["codec_name"], "pcm_u8");
}

TEST_F(RenderDither, GivesTheSameBytesInEveryRun) {
    const std::string in = makeNoise("in.wav", "pcm_s24le");
    render({in, file("one.wav")});
    render({in, file("two.wav")});
    EXPECT_TRUE(bytesOf("one.wav") == bytesOf("two.wav"));
}

}  // namespace
