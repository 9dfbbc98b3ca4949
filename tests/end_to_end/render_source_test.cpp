// Renders inputs that are more than one clean audio stream.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

class RenderSource : public test::RenderTest {
  protected:
    static size_t zeroCrossings(const std::vector<float>& samples) {
        size_t count = 0;
        for (size_t i = 1; i < samples.size(); ++i)
            count += (samples[i - 1] < 0.0F) != (samples[i] < 0.0F) ? 1 : 0;
        return count;
    }
};

TEST_F(RenderSource, RendersTheAudioOfAVideo) {
    test::makeQuietSpeech(file("sound.wav"), 2);
    test::ffmpeg({"-f", "lavfi", "-i", "testsrc=duration=1:size=64x64", "-i", file("sound.wav"), "-c:v",
                  "mpeg4", "-c:a", "flac", file("in.mkv")});
    render({file("in.mkv"), file("out.wav")});
    EXPECT_EQ(test::decode(file("out.wav")).size(), test::decode(file("sound.wav")).size());
}

TEST_F(RenderSource, TheStreamOptionSelectsAnAudioStream) {
    test::ffmpeg({"-f",   "lavfi",     "-i",          "testsrc=duration=1:size=64x64",
                  "-f",   "lavfi",     "-i",          "sine=frequency=300:duration=1:sample_rate=48000",
                  "-f",   "lavfi",     "-i",          "sine=frequency=900:duration=1:sample_rate=48000",
                  "-map", "1:a",       "-map",        "0:v",
                  "-map", "2:a",       "-c:v",        "mpeg4",
                  "-c:a", "pcm_s16le", file("in.mkv")});
    render({file("in.mkv"), file("first.wav")});
    render({file("in.mkv"), file("second.wav"), "--stream", "1"});
    EXPECT_NEAR(static_cast<double>(zeroCrossings(test::decode(file("first.wav")))), 600.0, 3.0);
    EXPECT_NEAR(static_cast<double>(zeroCrossings(test::decode(file("second.wav")))), 1800.0, 3.0);
}

TEST_F(RenderSource, ContinuesWhenAStreamChangesItsRateAndChannels) {
    test::makeQuietSpeech(file("a.aac"), 2, {"-ar", "48000"});
    test::makeQuietSpeech(file("b.aac"), 1, {"-ar", "44100"});
    test::writeFile(file("in.aac"), test::readFile(file("a.aac")) + test::readFile(file("b.aac")));
    const auto report = render({file("in.aac"), file("out.wav")});
    EXPECT_EQ(report["output"]["sample_rate_hz"], 48000);
    EXPECT_EQ(report["output"]["channels"], 2);
    const double seconds = static_cast<double>(test::decode(file("a.aac")).size()) / 2 / 48000 +
                           static_cast<double>(test::decode(file("b.aac")).size()) / 44100;
    // Decoders differ by one block at the boundary between the two streams.
    EXPECT_NEAR(report["length_seconds"].get<double>(), seconds, 2.0 * 1024 / 44100);
}

TEST_F(RenderSource, SkipsCountsAndReportsDamagedFrames) {
    test::makeQuietSpeech(file("in.flac"), 2);
    std::string bytes = test::readFile(file("in.flac"));
    ASSERT_GT(bytes.size(), 20'000U);
    std::fill_n(bytes.begin() + static_cast<ptrdiff_t>(bytes.size() / 2), 2000, '\x5a');
    test::writeFile(file("damaged.flac"), bytes);
    const auto result = run({file("damaged.flac"), file("out.wav"), "--json"});
    ASSERT_EQ(result.exit_code, 13) << result.err;
    EXPECT_GT(nlohmann::json::parse(result.out)["decode_errors"], 0);
    EXPECT_NE(result.err.find("damaged"), std::string::npos);
    EXPECT_FALSE(test::decode(file("out.wav")).empty());
}

TEST_F(RenderSource, RendersATruncatedFileToItsEnd) {
    test::makeQuietSpeech(file("in.flac"), 2);
    const std::string bytes = test::readFile(file("in.flac"));
    test::writeFile(file("half.flac"), bytes.substr(0, bytes.size() / 2));
    const auto report = render({file("half.flac"), file("out.wav"), "--ignore-damage"});
    EXPECT_GT(report["input"]["frames"], 4096);
    EXPECT_EQ(report["output"]["frames"], report["input"]["frames"]);
}

TEST_F(RenderSource, AcceptsAFileNameWithAColon) {
    test::makeQuietSpeech(file("a:b.wav"), 1);
    render({file("a:b.wav"), file("c:d.wav")});
    EXPECT_EQ(test::decode(file("c:d.wav")).size(), test::decode(file("a:b.wav")).size());
}

TEST_F(RenderSource, CanRenderAFileOntoItself) {
    test::makeQuietSpeech(file("in.wav"), 1);
    const auto before = test::decode(file("in.wav"));
    render({file("in.wav"), file("in.wav"), "--force"});
    const auto after = test::decode(file("in.wav"));
    ASSERT_EQ(after.size(), before.size());
    EXPECT_GT(*std::max_element(after.begin(), after.end()),
              5.0F * *std::max_element(before.begin(), before.end()));
}

}  // namespace
