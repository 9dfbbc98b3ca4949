// Checks which messages the program prints on standard output and which on standard error.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RenderMessage : public test::RenderTest {
  protected:
    RenderMessage() { test::makeQuietSpeech(file("in.wav"), 2); }

    test::ProcessResult say(const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {file("in.wav"), file("out.wav"), "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto result = run(arguments);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return result;
    }
};

TEST_F(RenderMessage, StandardOutputHoldsOnlyTheSummary) {
    const auto result = say({});
    EXPECT_THAT(result.out, StartsWith("Input"));
    EXPECT_THAT(result.out, HasSubstr("Loudness"));
    EXPECT_THAT(result.out, HasSubstr("of the filter, 0 dropped, 0 bypassed"));
    EXPECT_THAT(result.err, HasSubstr("in.wav -> "));
    // Only error messages begin with this prefix.
    EXPECT_THAT(result.err, Not(HasSubstr("sonivex: ")));
}

TEST_F(RenderMessage, JsonIsOneObjectOnOneLine) {
    const auto result = say({"--json"});
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["effect"], "normalizer");
    EXPECT_EQ(json["input"]["channels"], 2);
    EXPECT_LT(json["input"]["sample_peak_dbfs"], json["output"]["sample_peak_dbfs"]);
}

TEST_F(RenderMessage, QuietPrintsNothingButTheJson) {
    auto result = say({"--quiet"});
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    result = say({"--quiet", "--json"});
    EXPECT_TRUE(nlohmann::json::parse(result.out).is_object());
    EXPECT_EQ(result.err, "");
}

TEST_F(RenderMessage, VerboseShowsTheFiltersLog) {
    EXPECT_THAT(say({"--verbose"}).err, HasSubstr("SonivexFilter: sonivex init"));
    EXPECT_THAT(say({}).err, Not(HasSubstr("SonivexFilter: ")));
}

// The normalizer's mixer prints a version line to standard output.
TEST_F(RenderMessage, OnlyVerboseShowsWhatTheEffectPrints) {
    const auto verbose = say({"--verbose"});
    EXPECT_THAT(verbose.err, HasSubstr("Version"));
    EXPECT_THAT(verbose.out, Not(HasSubstr("Version")));
    const auto plain = say({});
    EXPECT_THAT(plain.err, Not(HasSubstr("Version")));
    EXPECT_THAT(plain.out, Not(HasSubstr("Version")));
}

TEST_F(RenderMessage, ReportsNoLoudnessForSilence) {
    test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=duration=1:sample_rate=48000", file("silence.wav")});
    const auto report = render({file("silence.wav"), file("out.wav")});
    EXPECT_TRUE(report["input"]["integrated_lufs"].is_null());
    EXPECT_TRUE(report["output"]["sample_peak_dbfs"].is_null());
}

// A file opened while a standard descriptor is closed would get its number and then receive the messages.
TEST_F(RenderMessage, ClosedStandardDescriptorsPutNoMessageIntoTheOutputFile) {
    say({});
    const std::string expected = test::readFile(file("out.wav"));
    int number = 0;
    for (const char* closed : {"<&-", "2>&-", "<&- 2>&-", "<&- >&- 2>&-"}) {
        const std::string out = file("closed" + std::to_string(number++) + ".wav");
        runRedirected(closed, {file("in.wav"), out, "--verbose"});
        EXPECT_TRUE(test::readFile(out) == expected) << closed;
    }
}

TEST_F(RenderMessage, FailsAfterCompletingTheOutputWhenTheSummaryCannotBeWritten) {
    say({});
    const std::string expected = test::readFile(file("out.wav"));
    int number = 0;
    const std::map<const char*, int> exit_codes = {{">&-", 1}, {">/dev/full", 8}};
    for (const auto& [output, exit_code] : exit_codes) {
        const std::string out = file("unheard" + std::to_string(number++) + ".wav");
        const auto result = runRedirected(output, {file("in.wav"), out});
        EXPECT_EQ(result.exit_code, exit_code) << output;
        EXPECT_THAT(result.err, HasSubstr("sonivex: cannot write to standard output")) << output;
        EXPECT_TRUE(test::readFile(out) == expected) << output;
        EXPECT_EQ(runRedirected(output, {file("in.wav"), out, "--force", "--quiet"}).exit_code, 0) << output;
    }
}

TEST_F(RenderMessage, HelpAndVersionGoToStandardOutput) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--help"}, {"--version"}, {"render", "--help"}}) {
        std::vector<std::string> all = {SONIVEX_PROGRAM};
        all.insert(all.end(), options.begin(), options.end());
        const auto result = test::runProcess(all);
        EXPECT_EQ(result.exit_code, 0);
        EXPECT_NE(result.out, "");
        EXPECT_EQ(result.err, "");
    }
}

}  // namespace
