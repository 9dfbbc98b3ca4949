// Mistyped words on the command line are named, with the nearest right word.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// Expects one line on standard error, which begins with `line` and ends with the help to read.
void expectRefusal(const std::vector<std::string>& arguments, const std::string& line,
                   const std::string& help) {
    std::vector<std::string> all = {SONIVEX_PROGRAM};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const auto result = test::runProcess(all);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sonivex: " + line + " (try \"" + help + "\")\n");
}

TEST(Typo, AnUnknownCommandIsNamed) {
    const std::string help = "sonivex --help";
    expectRefusal({"rendr", "a.wav", "b.wav"}, "unknown command \"rendr\"; did you mean \"render\"?", help);
    expectRefusal({"rendr", "a.wav", "--effect", "surround"},
                  "unknown command \"rendr\"; did you mean \"render\"?", help);
    expectRefusal({"Speech"}, "unknown command \"Speech\"; did you mean \"speech\"?", help);
    expectRefusal({"master", "a.wav"}, "unknown command \"master\"", help);
    expectRefusal({"x", "render", "a.wav", "b.wav"}, "unknown command \"x\"", help);
}

TEST(Typo, AMissingCommandIsAskedFor) {
    std::vector<std::string> all = {SONIVEX_PROGRAM};
    const auto result = test::runProcess(all);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, StartsWith("sonivex: no command given; the commands are render, ears, inspect"));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
}

TEST(Typo, AnUnknownOptionIsNamed) {
    expectRefusal({"--verson"}, "unknown option \"--verson\"; did you mean \"--version\"?", "sonivex --help");
    const std::string help = "sonivex render --help";
    expectRefusal({"render", "a.wav", "b.wav", "--efect", "surround"},
                  "unknown option \"--efect\"; did you mean \"--effect\"?", help);
    expectRefusal({"render", "a.wav", "b.wav", "--frame-sizes=64"},
                  "unknown option \"--frame-sizes\"; did you mean \"--frame-size\"?", help);
    expectRefusal({"render", "a.wav", "b.wav", "-effect", "surround"},
                  "unknown option \"-effect\"; did you mean \"--effect\"?", help);
    expectRefusal({"render", "a.wav", "b.wav", "--reverberation"}, "unknown option \"--reverberation\"",
                  help);
    // The missing FILE is not the first thing to say.
    expectRefusal({"ears", "--segmnt"}, "unknown option \"--segmnt\"; did you mean \"--segment\"?",
                  "sonivex ears --help");
    expectRefusal({"inspect", "--channel", "2"}, "unknown option \"--channel\"; did you mean \"--channels\"?",
                  "sonivex inspect --help");
}

TEST(Typo, AnOptionBeforeItsCommandIsSentBehindIt) {
    expectRefusal({"--effect", "surround", "render", "a.wav", "b.wav"},
                  "option \"--effect\" must follow a command", "sonivex --help");
}

TEST(Typo, AnArgumentTooManyIsNamed) {
    expectRefusal({"render", "a.wav", "b.wav", "c.wav"}, "unexpected argument \"c.wav\"",
                  "sonivex render --help");
}

TEST(Typo, AnUnknownNameIsNamedWithTheNearest) {
    expectRefusal({"render", "a.wav", "b.wav", "--effect", "dialog"},
                  "--effect: unknown effect \"dialog\"; did you mean \"dialogue\"?", "sonivex render --help");
    expectRefusal({"render", "a.wav", "b.wav", "--type", "megabas"},
                  "--type: must be one of 3DSurround, MegaBass, not \"megabas\"; did you mean \"MegaBass\"?",
                  "sonivex render --help");
    expectRefusal({"render", "a.wav", "b.wav", "--timeline", "keeps"},
                  "--timeline: must be one of keep, ignore, not \"keeps\"; did you mean \"keep\"?",
                  "sonivex render --help");
    expectRefusal({"bench", "--effect", "normaliser"},
                  "--effect: must be one of normalizer, surround, dialogue, not \"normaliser\"; did you mean "
                  "\"normalizer\"?",
                  "sonivex bench --help");
}

}  // namespace
