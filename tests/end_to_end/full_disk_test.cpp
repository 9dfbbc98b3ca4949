// Results that go to a full disk: every command says so and ends with the exit code for a lack of space.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/dialogue_media.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::StartsWith;

constexpr int kNoSpace = 8;

class FullDisk : public test::RenderTest {
  protected:
    // Runs the program with its standard output on a device that is always full.
    static test::ProcessResult runOnFullDevice(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {"sh", "-c", "exec \"$0\" \"$@\" >/dev/full", SONIVEX_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::runProcess(command);
    }
};

TEST_F(FullDisk, IsReportedByEveryCommandThatPrintsResults) {
    test::makeDialogueMix(file("speech.wav"), file("background.wav"), file("mix.wav"), 2);
    const std::string in = file("mix.wav");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"--help"},
             {"--version"},
             {"render", "--help"},
             {"render", "--list-presets"},
             {"render", in, file("dry.wav"), "--dry-run"},
             {"render", in, file("dry.wav"), "--dry-run", "--json"},
             {"render", in, file("text.wav")},
             {"render", in, file("json.wav"), "--json"},
             {"render", in, "-", "--format", "wav"},
             {"render", "--batch", folder_.path(), "-o", file("out"), "--json"},
             {"probe", in},
             {"probe", in, "--json"},
             {"inspect", in},
             {"inspect", "--pair", in, in, "--json"},
             {"ears", in},
             {"ears", in, "--json"},
             {"speech", file("speech.wav"), file("background.wav"), in},
             {"speech", file("speech.wav"), file("background.wav"), in, "--json"},
             {"responses", "--set", "cingo"},
             {"responses", "--set", "cingo", "--json"},
             {"responses", "--set", "cingo", "--csv"},
             {"bench", "--effect", "normalizer", "--seconds", "0.1"},
             {"bench", "--effect", "normalizer", "--seconds", "0.1", "--json"}}) {
        std::string line;
        for (const std::string& argument : arguments) line += argument + " ";
        SCOPED_TRACE(line);
        const auto result = runOnFullDevice(arguments);
        EXPECT_EQ(result.exit_code, kNoSpace) << result.err;
        const size_t last = result.err.rfind("sonivex: cannot write to ");
        ASSERT_NE(last, std::string::npos) << result.err;
        EXPECT_THAT(result.err.substr(last),
                    StartsWith("sonivex: cannot write to standard output: No space left"));
        EXPECT_EQ(result.err.find('\n', last), result.err.size() - 1) << result.err;
    }
}

TEST_F(FullDisk, LeavesTheOutputInPlaceIfOnlyTheSummaryDoesNotFit) {
    test::makeQuietSpeech(file("in.wav"), 2, {"-t", "0.2"});
    EXPECT_EQ(runOnFullDevice({"render", file("in.wav"), file("out.wav")}).exit_code, kNoSpace);
    EXPECT_EQ(test::decode(file("out.wav")).size(), 2U * 9600);
}

}  // namespace
