// Runs `sonivex ears`, which measures the interaural differences of a file.

#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

class EarsCommand : public test::RenderTest {
  protected:
    static test::ProcessResult ears(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "ears"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::runProcess(command);
    }
};

TEST_F(EarsCommand, MeasuresEachSegmentOfAFile) {
    // The right ear of the first half lags by 24 samples (500 us) and is 6.02 dB softer. The second half
    // swaps the ears.
    const std::string path = file("in.wav");
    const std::string speech = std::string(SONIVEX_SPEECH_FOLDER) + "/Front_Center.wav";
    test::ffmpeg({"-i", speech, "-filter_complex",
                  "[0]apad=whole_len=72000,asplit=2[a][b];[b]adelay=24S,atrim=end_sample=72000,volume=0.5[d];"
                  "[a][d]join=inputs=2:channel_layout=stereo,asplit=2[e][f];[f]pan=stereo|c0=c1|c1=c0[g];"
                  "[e][g]concat=n=2:v=0:a=1",
                  path});
    const auto result = ears({path, "--segment", "first=0-1.5", "--segment", "second=1.5-3", "--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto rows = nlohmann::json::parse(result.out);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0]["name"], "first");
    EXPECT_EQ(rows[0]["heard"], "left");
    EXPECT_NEAR(rows[0]["left_leads_us"].get<double>(), 500.0, 1.0);
    EXPECT_NEAR(rows[0]["left_louder_db"].get<double>(), 6.02, 0.01);
    EXPECT_EQ(rows[1]["heard"], "right");
    EXPECT_NEAR(rows[1]["left_leads_us"].get<double>(), -500.0, 1.0);
    EXPECT_NEAR(rows[1]["left_louder_db"].get<double>(), -6.02, 0.01);
    // 500 us is the lead at some 50 degrees.
    EXPECT_NEAR(rows[0]["angle_by_delay_deg"].get<double>(), 50.0, 10.0);
    EXPECT_NEAR(rows[1]["angle_deg"].get<double>(), -rows[0]["angle_deg"].get<double>(), 1.0);
    EXPECT_NEAR(rows[1]["lowest_by_level_deg"].get<double>(), -rows[0]["highest_by_level_deg"].get<double>(),
                1.0);
}

TEST_F(EarsCommand, MeasuresTheWholeFileAsOneSegmentByDefault) {
    test::makeQuietSpeech(file("in.flac"), 2);
    const auto result = ears({file("in.flac")});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.out.find("whole file  "), std::string::npos) << result.out;
}

TEST_F(EarsCommand, RejectsUnusableInputWithOneLineOnStandardError) {
    test::makeQuietSpeech(file("mono.wav"), 1);
    test::makeQuietSpeech(file("stereo.wav"), 2);
    struct Case {
        std::vector<std::string> arguments;
        int exit_code;
    };
    for (const Case& bad : {Case{{file("missing.wav")}, 3}, Case{{file("mono.wav")}, 5},
                            Case{{file("stereo.wav"), "--segment", "x=1-99"}, 2},
                            Case{{file("stereo.wav"), "--segment", "x=2-1"}, 2}, Case{{}, 2}}) {
        const auto result = ears(bad.arguments);
        EXPECT_EQ(result.exit_code, bad.exit_code);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("sonivex: "), 0U);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    }
}

}  // namespace
