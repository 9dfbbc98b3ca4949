// Renders surround from file to file. Any supported layout becomes stereo of the same sample format and
// length, aligned with the input.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

constexpr int kLength = 24000;
constexpr int kClick = 12000;

struct Case {
    std::string name;
    int channels;
    std::string layout;
    std::string type;
    int64_t tail;
    double left;   // delay of a click in the first channel to the left ear, in frames
    double right;  // delay to the right ear, in frames; negative: the click does not reach it
};

void PrintTo(const Case& test, std::ostream* stream) {
    *stream << test.name;
}

class RenderSurround : public test::RenderTest {
  protected:
    // Writes a file of float samples with a click of 0.25 of full scale at frame kClick in the first channel.
    std::string makeClick(int channels, const std::string& layout) const {
        const std::string path = file("in.wav");
        std::string expression = "if(eq(n\\," + std::to_string(kClick) + ")\\,0.25\\,0)";
        for (int c = 1; c < channels; ++c) expression += "|0";
        test::ffmpeg({"-f", "lavfi", "-i",
                      "aevalsrc=" + expression + ":s=48000:c=" + layout +
                          ",atrim=end_sample=" + std::to_string(kLength),
                      "-c:a", "pcm_f32le", path});
        return path;
    }

    static std::vector<float> channel(const std::vector<float>& stereo, size_t which) {
        std::vector<float> samples;
        for (size_t i = which; i < stereo.size(); i += 2) samples.push_back(stereo[i]);
        return samples;
    }

    // Returns the index of the first sample that reaches a tenth of the peak.
    static double arrival(const std::vector<float>& samples) {
        float peak = 0.0F;
        for (const float sample : samples) peak = std::max(peak, std::abs(sample));
        const auto first = std::find_if(samples.begin(), samples.end(),
                                        [&](float sample) { return std::abs(sample) >= 0.1F * peak; });
        return static_cast<double>(first - samples.begin());
    }

    static double energy(const std::vector<float>& samples, size_t from) {
        double sum = 0.0;
        for (size_t i = from; i < samples.size(); ++i) sum += static_cast<double>(samples[i]) * samples[i];
        return sum;
    }
};

class RenderSurroundLayout : public RenderSurround, public testing::WithParamInterface<Case> {};

TEST_P(RenderSurroundLayout, RendersAlignedStereoOfTheSameFormatAndLengthWithAnOptionalTail) {
    const Case& test = GetParam();
    const std::string in = makeClick(test.channels, test.layout);
    const auto report =
        render({"--effect", "surround", "--type", test.type, "--no-limiter", in, file("out.wav")});
    render({"--effect", "surround", "--type", test.type, "--no-limiter", "--tail", in, file("tail.wav")});

    const auto stream = test::probe(file("out.wav"))["streams"][0];
    EXPECT_EQ(stream["sample_fmt"], "flt");
    EXPECT_EQ(stream["channels"], 2);
    EXPECT_EQ(stream["sample_rate"], "48000");
    EXPECT_EQ(report["frames_dropped"], 0);

    const auto out = test::decode(file("out.wav"));
    ASSERT_EQ(out.size(), 2U * kLength);
    const double left = arrival(channel(out, 0));
    EXPECT_NEAR(left, kClick + test.left, 1.0);
    if (test.right >= 0.0) {
        EXPECT_NEAR(arrival(channel(out, 1)), kClick + test.right, 1.0);
    } else {
        EXPECT_EQ(energy(channel(out, 1), 0), 0.0);
    }

    // The tail extends the output and leaves its beginning unchanged.
    const auto tail = test::decode(file("tail.wav"));
    ASSERT_EQ(tail.size(), 2U * static_cast<size_t>(kLength + test.tail));
    EXPECT_TRUE(std::equal(out.begin(), out.end(), tail.begin()));
}

// The arrival times come from the response tables (30 degrees: 34 and 46 samples). The second stage of
// MegaBass adds 40 samples. MegaBass in stereo has no crosstalk: each ear hears both loudspeakers of its own
// channel.
INSTANTIATE_TEST_SUITE_P(Layouts, RenderSurroundLayout,
                         testing::Values(Case{"Mono3D", 1, "mono", "3DSurround", 13000, 34, 34},
                                         Case{"MonoMegaBass", 1, "mono", "MegaBass", 12999, 74, 74},
                                         Case{"Stereo3D", 2, "stereo", "3DSurround", 13000, 34, 46},
                                         Case{"StereoMegaBass", 2, "stereo", "MegaBass", 12999, 74, -1},
                                         Case{"FiveOne3D", 6, "5.1", "3DSurround", 8544, 34, 46},
                                         Case{"FiveOneMegaBass", 6, "5.1", "MegaBass", 12999, 74, 86},
                                         Case{"SevenOne3D", 8, "7.1", "3DSurround", 8640, 34, 46},
                                         Case{"SevenOneMegaBass", 8, "7.1", "MegaBass", 12999, 74, 86}),
                         [](const testing::TestParamInfo<Case>& test) { return test.param.name; });

TEST_F(RenderSurround, TheTailHoldsTheWholeReverberation) {
    test::makeQuietSpeech(file("speech.wav"), 6, {"-c:a", "pcm_f32le"});
    // The same speech is followed by a second of silence, which is longer than the reverberation.
    test::ffmpeg(
        {"-i", file("speech.wav"), "-af", "apad=pad_len=48000", "-c:a", "pcm_f32le", file("long.wav")});
    // Dither would go on for a while in the silence of the long file.
    render({"--effect", "surround", "--no-limiter", "--no-dither", "--tail", file("speech.wav"),
            file("tail.wav")});
    render({"--effect", "surround", "--no-limiter", "--no-dither", file("long.wav"), file("whole.wav")});
    const auto tail = test::decode(file("tail.wav"));
    auto whole = test::decode(file("whole.wav"));
    ASSERT_GT(whole.size(), tail.size());
    EXPECT_TRUE(std::equal(tail.begin(), tail.end(), whole.begin()));
    EXPECT_EQ(energy(whole, tail.size()), 0.0);
}

TEST_F(RenderSurround, OnlyTheLimiterKeepsALoudMixBelowFullScale) {
    const std::string in = file("loud.wav");
    test::makeQuietSpeech(file("speech.wav"), 8, {"-c:a", "pcm_f32le"});
    test::ffmpeg(
        {"-i", file("speech.wav"), "-af", "volume=36dB,alimiter=limit=1:level=0", "-c:a", "pcm_f32le", in});
    const auto limited = render({"--effect", "surround", in, file("limited.wav")});
    const auto clipped = render({"--effect", "surround", "--no-limiter", in, file("clipped.wav")});
    EXPECT_GT(clipped["output"]["sample_peak_dbfs"].get<double>(), -0.001);
    EXPECT_LT(limited["output"]["sample_peak_dbfs"].get<double>(), -0.001);
}

TEST_F(RenderSurround, RejectsATailForAnEffectWithoutReverberation) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const auto result = run({"--effect", "normalizer", "--tail", file("in.wav"), file("out.wav")});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_NE(result.err.find("--tail"), std::string::npos);
}

}  // namespace
