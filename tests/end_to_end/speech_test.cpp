// Measures the speech in files that went through an encoder, and in files that do not belong together.

#include <gtest/gtest.h>

#include <filesystem>

#include "end_to_end/media/dialogue_media.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

class Speech : public test::RenderTest {
  protected:
    Speech() {
        test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 4);
        render({"--effect", "dialogue", "--voice", "3", file("mix.wav"), file("clearer.wav")});
    }

    test::ProcessResult speech(const std::string& background, const std::string& out,
                               const std::vector<std::string>& options = {}) const {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "speech", file("speech.wav"), file(background),
                                            file(out)};
        command.insert(command.end(), options.begin(), options.end());
        return test::runProcess(command);
    }
    nlohmann::json measured(const std::string& out) const {
        const auto result = speech("background.wav", out, {"--json"});
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return result.exit_code == 0 ? nlohmann::json::parse(result.out) : nlohmann::json();
    }
};

TEST_F(Speech, StaysTheSameThroughAc3WhichShiftsIt) {
    test::ffmpeg({"-i", file("clearer.wav"), "-b:a", "192k", file("clearer.ac3")});
    const auto plain = measured("clearer.wav");
    const auto encoded = measured("clearer.ac3");
    ASSERT_FALSE(plain.empty() || encoded.empty());
    EXPECT_EQ(plain["shift_samples"], 0);
    EXPECT_EQ(encoded["shift_samples"], 256);
    EXPECT_GT(plain["rise_db"].get<double>(), 1.0);
    EXPECT_NEAR(encoded["rise_db"].get<double>(), plain["rise_db"].get<double>(), 0.2);
}

TEST_F(Speech, StatesTheShiftOfAnEarlyOutput) {
    test::ffmpeg({"-i", file("clearer.wav"), "-af", "atrim=start_sample=480", file("early.wav")});
    const auto result = speech("background.wav", "early.wav");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.out.find("Shift of OUT                -480 samples (-10.00 ms)\n"), std::string::npos)
        << result.out;
}

TEST_F(Speech, IsRefusedForABackgroundThatIsNotInTheOutput) {
    test::ffmpeg({"-f", "lavfi", "-i",
                  "anoisesrc=color=pink:sample_rate=48000:amplitude=0.1:seed=8:duration=4", "-ac", "2",
                  file("other.wav")});
    const auto result = speech("other.wav", "mix.wav");
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.find("sonivex: cannot explain \"" + file("mix.wav") + "\": "), 0U) << result.err;
    EXPECT_NE(result.err.find(" is neither speech nor background, "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("are these the right files?\n"), std::string::npos) << result.err;
}

TEST_F(Speech, IsRefusedForWhatIsNotStereoAtOneUsableRate) {
    struct Case {
        std::vector<std::string> change;
        const char* reason;
    };
    for (const Case& changed : {Case{{"-ac", "1"}, "it is not stereo (channels: 1)"},
                                Case{{"-ar", "44100"}, "the three files have different sample rates"}}) {
        std::vector<std::string> arguments = {"-i", file("mix.wav")};
        arguments.insert(arguments.end(), changed.change.begin(), changed.change.end());
        arguments.push_back(file("changed.wav"));
        test::ffmpeg(arguments);
        const auto result = speech("background.wav", "changed.wav");
        EXPECT_EQ(result.exit_code, 5);
        EXPECT_EQ(result.err,
                  "sonivex: cannot measure \"" + file("changed.wav") + "\": " + changed.reason + "\n");
    }
    for (const char* name : {"speech.wav", "background.wav", "mix.wav"}) {
        test::ffmpeg({"-i", file(name), "-c:a", "pcm_s16le", "-ar", "499", file("slow.wav")});
        std::filesystem::rename(file("slow.wav"), file(name));
    }
    const auto slow = speech("background.wav", "mix.wav");
    EXPECT_EQ(slow.exit_code, 5);
    EXPECT_EQ(slow.err,
              "sonivex: cannot measure \"" + file("mix.wav") + "\": its sample rate is below 500 Hz\n");
}

TEST_F(Speech, IsRefusedWithoutABackground) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=r=48000:cl=stereo:d=4", file("silence.wav")});
    const auto result = speech("silence.wav", "mix.wav");
    EXPECT_EQ(result.exit_code, 4);
    EXPECT_EQ(result.err,
              "sonivex: cannot measure \"" + file("mix.wav") + "\": there is no speech, or no background\n");
}

TEST_F(Speech, IsRefusedForAnUnrelatedOutput) {
    test::ffmpeg({"-i", std::string(SONIVEX_SPEECH_FOLDER) + "/Rear_Left.wav", "-af",
                  "aloop=loop=2:size=70000,pan=stereo|c0=c0|c1=c0", file("other.wav")});
    EXPECT_EQ(speech("background.wav", "other.wav").exit_code, 5);
}

TEST_F(Speech, IsRefusedForSurroundWhichMixesTheChannels) {
    render({"--effect", "surround", file("mix.wav"), file("around.wav")});
    EXPECT_EQ(speech("background.wav", "around.wav").exit_code, 5);
}

}  // namespace
