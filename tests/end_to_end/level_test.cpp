// The level of the output: a target loudness, and a ceiling for the true peak. ffmpeg's own meter is the
// judge.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class RenderLevel : public test::RenderTest {
  protected:
    // Twelve seconds of quiet speech.
    std::string makeSpeech(const std::string& name, int channels) {
        test::makeQuietSpeech(file("short.wav"), channels);
        test::ffmpeg({"-stream_loop", "9", "-i", file("short.wav"), "-c:a", "pcm_s24le", file(name)});
        return file(name);
    }
};

struct Measured {
    double lufs;
    double true_peak_dbtp;
};

// Reads the figures in the summary of ffmpeg's filter.
Measured measure(const std::string& path) {
    const auto result = test::runProcess(
        {"ffmpeg", "-nostdin", "-hide_banner", "-i", path, "-af", "ebur128=peak=true", "-f", "null", "-"});
    const std::string summary = result.err.substr(result.err.rfind("Summary:"));
    const auto after = [&](const std::string& label) {
        return std::stod(summary.substr(summary.find(label) + label.size()));
    };
    return {after("I:"), after("Peak:")};
}

TEST_F(RenderLevel, ReachesTheTargetByAPlainGain) {
    for (const int channels : {1, 2, 6}) {
        SCOPED_TRACE(channels);
        const std::string in = makeSpeech("in.wav", channels);
        render({in, file("plain.wav"), "--force"});
        for (const char* target : {"-33", "-23"}) {
            const auto report = render({in, file("out.wav"), "--target-lufs", target, "--force"});
            EXPECT_THAT(report["notes"], IsEmpty());
            const Measured out = measure(file("out.wav"));
            EXPECT_NEAR(out.lufs, std::stod(target), 0.2);
            EXPECT_LT(out.true_peak_dbtp, -1.0);
            EXPECT_NEAR(report["output"]["true_peak_dbtp"].get<double>(), out.true_peak_dbtp, 0.3);
        }
        // The output is the plain one, multiplied.
        const auto plain = test::decode(file("plain.wav"));
        const auto out = test::decode(file("out.wav"));
        ASSERT_EQ(plain.size(), out.size());
        double product = 0.0;
        double energy = 0.0;
        for (size_t i = 0; i < plain.size(); ++i) {
            product += static_cast<double>(plain[i]) * out[i];
            energy += static_cast<double>(plain[i]) * plain[i];
        }
        const double gain = product / energy;
        for (size_t i = 0; i < plain.size(); ++i) ASSERT_NEAR(out[i], gain * plain[i], 1e-6) << i;
    }
}

TEST_F(RenderLevel, HoldsTheTruePeakBelowTheCeiling) {
    const std::string in = makeSpeech("in.wav", 2);
    for (const char* ceiling : {"-1", "-6"}) {
        for (const char* format : {"wav", "flac"}) {
            SCOPED_TRACE(std::string(ceiling) + " " + format);
            const std::string out = file(std::string("out.") + format);
            const auto report = render({in, out, "--target-lufs", "-12", "--true-peak", ceiling, "--force"});
            const Measured measured = measure(out);
            // ffmpeg prints tenths.
            EXPECT_LE(measured.true_peak_dbtp, std::stod(ceiling) + 0.05);
            EXPECT_LE(report["output"]["true_peak_dbtp"].get<double>(), std::stod(ceiling));
            EXPECT_GE(measured.true_peak_dbtp, std::stod(ceiling) - 0.5);
            EXPECT_EQ(test::decode(out).size(), test::decode(in).size());
        }
    }
}

TEST_F(RenderLevel, SaysWhatTheLimiterLeavesOfTheTarget) {
    const std::string in = makeSpeech("in.wav", 2);
    const auto report = render({in, file("out.wav"), "--target-lufs", "-5"});
    EXPECT_THAT(report["notes"].back(),
                HasSubstr("the limiter holds the true peak at -1.0 dBTP; the output has"));
    EXPECT_THAT(report["notes"].back(), HasSubstr("not -5.0"));
}

TEST_F(RenderLevel, HoldsTheCeilingForNoise) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "anoisesrc=r=48000:d=5:a=0.05:c=white:seed=3", "-ac", "2", file("in.wav")});
    const auto report = render({file("in.wav"), file("out.wav"), "--target-lufs", "-6"});
    EXPECT_LE(report["output"]["true_peak_dbtp"].get<double>(), -1.0);
    EXPECT_LE(measure(file("out.wav")).true_peak_dbtp, -0.95);
}

TEST_F(RenderLevel, RefusesATargetForAPipeWhichCanBeReadOnlyOnce) {
    const std::string in = makeSpeech("in.wav", 1);
    const auto result = runRedirected("<'" + in + "'", {"-", file("out.wav"), "--target-lufs", "-23"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr("sonivex: --target-lufs reads IN more than once, so IN must be a file, "
                                      "not a pipe\n"));
    EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
}

TEST_F(RenderLevel, LeavesSilenceAlone) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=r=48000:cl=stereo", "-t", "1", file("in.wav")});
    const auto report = render({file("in.wav"), file("out.wav"), "--target-lufs", "-23"});
    EXPECT_EQ(report["notes"].back(),
              "the output is too quiet for its loudness to be measured; its level stays");
    for (const float sample : test::decode(file("out.wav"))) ASSERT_EQ(sample, 0.0F);
}

}  // namespace
