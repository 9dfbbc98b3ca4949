// Renders dialogue enhancement from file to file. The output is aligned with the input, and its speech stands
// out more.

#include <gtest/gtest.h>

#include <cmath>

#include "end_to_end/media/dialogue_media.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"
#include "support/signals/lateness.h"

namespace {

constexpr int kSeconds = 4;

class RenderDialogue : public test::RenderTest {
  protected:
    RenderDialogue() {
        test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), kSeconds);
    }

    static nlohmann::json program(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        command.emplace_back("--json");
        const auto result = test::runProcess(command);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return nlohmann::json::parse(result.out);
    }
};

TEST_F(RenderDialogue, KeepsAlignmentAndLengthForEveryCallSize) {
    const auto in = test::decode(file("mix.wav"));
    std::string expected;
    for (const auto& [size, delay] :
         std::vector<std::pair<int, int>>{{512, 1536}, {64, 1984}, {256, 1792}, {1024, 1536}, {4096, 1536}}) {
        const auto report = render({"--effect", "dialogue", "--frame-size", std::to_string(size), "--force",
                                    file("mix.wav"), file("out.wav")});
        EXPECT_EQ(report["delay_frames"], delay) << size;
        const auto out = test::decode(file("out.wav"));
        ASSERT_EQ(out.size(), in.size());
        if (expected.empty()) {
            expected = test::readFile(file("out.wav"));
            EXPECT_EQ(test::lateness(in, out, 64), 0);
        }
        EXPECT_TRUE(test::readFile(file("out.wav")) == expected) << size;
    }
}

TEST_F(RenderDialogue, RawLatencyEqualsTheReportedDelay) {
    render(
        {"--effect", "dialogue", "--raw-latency", "--frame-size", "256", file("mix.wav"), file("raw.wav")});
    EXPECT_EQ(test::lateness(test::decode(file("mix.wav")), test::decode(file("raw.wav")), 2000), 1792);
}

TEST_F(RenderDialogue, RaisesSpeechAboveItsBackgroundMoreWithAHigherVoiceLevel) {
    double previous_db = 0.3;
    for (const char* voice : {"1", "3"}) {
        render({"--effect", "dialogue", "--voice", voice, "--force", file("mix.wav"), file("out.wav")});
        const auto measured =
            program({"speech", file("speech.wav"), file("background.wav"), file("out.wav")});
        EXPECT_GT(measured["segments"], 10);
        EXPECT_GT(measured["rise_db"].get<double>(), previous_db) << voice;
        previous_db = measured["rise_db"].get<double>();
    }
    const auto unchanged = program({"speech", file("speech.wav"), file("background.wav"), file("mix.wav")});
    EXPECT_NEAR(unchanged["rise_db"].get<double>(), 0.0, 0.1);
}

TEST_F(RenderDialogue, SpeechCommandRejectsSamplesThatAreNotFinite) {
    test::ffmpeg({"-f", "lavfi", "-i",
                  "aevalsrc=0.1|if(eq(n\\,100)\\,0/0\\,0.1):sample_rate=48000:duration=1", "-c:a",
                  "pcm_f32le", file("broken.wav")});
    const auto result = test::runProcess(
        {SONIVEX_PROGRAM, "speech", file("speech.wav"), file("broken.wav"), file("mix.wav")});
    EXPECT_EQ(result.exit_code, 4);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sonivex: cannot measure \"" + file("broken.wav") +
                              "\": it contains NaN or infinite samples\n");
}

// Noise on one side contains no centre speech, so only the neutral gain remains: 4/3 less 0.02 dB.
TEST_F(RenderDialogue, AppliesANeutralGainOfTwoAndAHalfDecibels) {
    test::ffmpeg({"-i", file("background.wav"), "-af", "pan=stereo|c0=c0|c1=0*c0", file("left.wav")});
    render({"--effect", "dialogue", file("left.wav"), file("out.wav")});
    const auto pair = program({"inspect", "--pair", file("left.wav"), file("out.wav")})["pairs"][0];
    EXPECT_EQ(pair["latency_frames"], 0);
    EXPECT_NEAR(pair["gain_db"].get<double>(), 20.0 * std::log10(4.0 / 3.0 * 0.998), 0.05);
}

TEST_F(RenderDialogue, AcceptsOnlyStereoAndVoiceLevelsOfAtLeastOne) {
    test::makeQuietSpeech(file("six.wav"), 6);
    const auto six = run({"--effect", "dialogue", "--strict", file("six.wav"), file("out.wav")});
    EXPECT_EQ(six.exit_code, 5);
    EXPECT_NE(six.err.find("2 channels, not 6"), std::string::npos) << six.err;
    for (const char* voice : {"0.99", "-1", "nan", "inf", "1e300", "loud", ""}) {
        const auto result = run({"--effect", "dialogue", "--voice", voice, file("mix.wav"), file("out.wav")});
        EXPECT_EQ(result.exit_code, 2) << voice;
        EXPECT_NE(result.err.find("--voice"), std::string::npos) << result.err;
    }
}

}  // namespace
