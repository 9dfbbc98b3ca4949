// Streams that change their channels midway: the effects start afresh, as in a player.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

constexpr size_t kRate_hz = 48000;
// AC-3 decoders fill bands without bits with noise, which differs from run to run of the same packets.
constexpr double kDecodersNoise = 1e-3;

class FormatChange : public test::RenderTest {
  protected:
    // Makes in.ac3, stereo and then 5.1, out of first.ac3 and second.ac3.
    FormatChange() {
        test::makeQuietSpeech(file("first.ac3"), 2, {"-b:a", "448k"});
        test::makeQuietSpeech(file("second.ac3"), 6, {"-b:a", "448k"});
        const std::string both = test::readFile(file("first.ac3")) + test::readFile(file("second.ac3"));
        test::writeFile(file("in.ac3"), both);
        first_frames_ = test::decode(file("first.ac3")).size() / 2;
    }

    // Returns the power of the difference between the second part of a stereo output and `part`, over the
    // power of `part`. The first half second is left out: the decoder still holds something of the first
    // part.
    static double difference(const std::vector<float>& whole, size_t second_at,
                             const std::vector<float>& part) {
        double error = 0.0;
        double power = 0.0;
        for (size_t i = kRate_hz; i < part.size(); ++i) {
            error += std::pow(static_cast<double>(whole.at(second_at + i)) - part[i], 2.0);
            power += std::pow(static_cast<double>(part[i]), 2.0);
        }
        return error / power;
    }

    size_t first_frames_ = 0;
};

TEST_F(FormatChange, SurroundHearsFiveLoudspeakersAfterTwo) {
    const auto report = render({file("in.ac3"), file("out.wav"), "--effect", "surround", "--no-dither"});
    render({file("second.ac3"), file("second.wav"), "--effect", "surround", "--no-dither"});
    const auto whole = test::decode(file("out.wav"));
    const auto second = test::decode(file("second.wav"));
    ASSERT_EQ(whole.size(), 2 * first_frames_ + second.size());
    EXPECT_LT(difference(whole, 2 * first_frames_, second), kDecodersNoise);
    EXPECT_EQ(report["output"]["channels"], 2);
    bool is_said = false;
    for (const std::string line : report["notes"]) {
        is_said |= line.find("from 48000 Hz, stereo to 48000 Hz, 5.1") != std::string::npos &&
                   line.find("starts afresh") != std::string::npos;
    }
    EXPECT_TRUE(is_said) << report["notes"];
}

TEST_F(FormatChange, TheOutputKeepsTheChannelsThatItBeganWith) {
    render({file("in.ac3"), file("out.wav"), "--no-dither"});
    render({file("second.ac3"), file("second.wav"), "--no-dither", "--layout", "stereo"});
    const auto whole = test::decode(file("out.wav"));
    const auto second = test::decode(file("second.wav"));
    const auto stream = test::probe(file("out.wav"))["streams"][0];
    EXPECT_EQ(stream["channels"], 2);
    EXPECT_EQ(stream.value("channel_layout", "stereo"), "stereo");  // the ffprobe of FFmpeg 7 names none
    ASSERT_EQ(whole.size(), 2 * first_frames_ + second.size());
    EXPECT_LT(difference(whole, 2 * first_frames_, second), kDecodersNoise);
}

TEST_F(FormatChange, IsSaidOnStandardErrorWithItsTime) {
    const auto result = run({file("in.ac3"), file("out.wav")});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.err, HasSubstr("the audio changes at 0:01 from 48000 Hz, stereo to 48000 Hz, 5.1"));
}

}  // namespace
