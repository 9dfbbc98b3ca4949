// Presets give the options that the command line leaves open.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Preset : public test::RenderTest {
  protected:
    Preset() { test::makeQuietSpeech(file("in.wav"), 2); }

    // Runs the program with presets in the test's folder alone, besides those that it is shipped with.
    test::ProcessResult runHere(const std::vector<std::string>& arguments) const {
        std::vector<std::string> all = {"env", "SONIVEX_PRESETS=" + folder_.path(),
                                        "XDG_CONFIG_HOME=" + file("config")};
        const auto program = command(arguments);
        all.insert(all.end(), program.begin(), program.end());
        return test::runProcess(all);
    }

    std::string rendered(const std::string& name, const std::vector<std::string>& options) const {
        std::vector<std::string> arguments = {file("in.wav"), file(name), "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto result = runHere(arguments);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return test::readFile(file(name));
    }
};

TEST_F(Preset, GivesTheSameOutputAsItsOptions) {
    test::writeFile(file("mine.preset"), "# Mine\neffect = dialogue,normalizer\nvoice = 3\n");
    const std::string expected = rendered("a.wav", {"--effect", "dialogue,normalizer", "--voice", "3"});
    EXPECT_TRUE(rendered("b.wav", {"--preset", "mine"}) == expected);
    EXPECT_TRUE(rendered("c.wav", {"--preset", file("mine.preset")}) == expected);
    EXPECT_TRUE(rendered("d.wav", {"--preset", "mine", "--voice", "1"}) ==
                rendered("e.wav", {"--effect", "dialogue,normalizer"}));
    EXPECT_TRUE(rendered("f.wav", {"--preset", "mine", "--effect", "normalizer"}) == rendered("g.wav", {}));
}

TEST_F(Preset, MayBeginWithAByteOrderMark) {
    test::writeFile(file("mine.preset"), "\xEF\xBB\xBF# Mine\r\neffect = dialogue\r\n");
    test::writeFile(file("bare.preset"),
                    "\xEF\xBB\xBF"
                    "effect = dialogue\n");
    const std::string expected = rendered("a.wav", {"--effect", "dialogue"});
    EXPECT_TRUE(rendered("b.wav", {"--preset", "mine"}) == expected);
    EXPECT_TRUE(rendered("c.wav", {"--preset", "bare"}) == expected);
    EXPECT_THAT(runHere({"--list-presets"}).out, HasSubstr("  Mine"));
}

TEST_F(Preset, IsSavedAndUsedAgain) {
    const auto saved =
        runHere({"--save-preset", "bass", "--effect", "surround", "--type", "MegaBass", "--mode", "3"});
    EXPECT_EQ(saved.exit_code, 0) << saved.err;
    const std::string path = file("config/sonivex/presets/bass.preset");
    EXPECT_THAT(saved.err, HasSubstr(path));
    EXPECT_TRUE(rendered("a.wav", {"--preset", "bass"}) ==
                rendered("b.wav", {"--effect", "surround", "--type", "MegaBass", "--mode", "3"}));

    const std::string contents = test::readFile(path);
    const auto refused = runHere({"--save-preset", "bass", "--effect", "dialogue"});
    EXPECT_EQ(refused.exit_code, 6);
    EXPECT_THAT(refused.err, HasSubstr("--force"));
    EXPECT_EQ(test::readFile(path), contents);
    EXPECT_EQ(runHere({"--save-preset", "bass", "--effect", "dialogue", "--force"}).exit_code, 0);
    EXPECT_THAT(test::readFile(path), HasSubstr("dialogue"));
}

TEST_F(Preset, IsSavedBesidesRendering) {
    rendered("out.wav", {"--save-preset", file("new.preset"), "--effect", "dialogue"});
    EXPECT_THAT(test::readFile(file("new.preset")), HasSubstr("dialogue"));
}

TEST_F(Preset, OptionsWithoutUseAreNotSaved) {
    const auto result = runHere({"--save-preset", "x", "--mode", "2"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_FALSE(std::filesystem::exists(file("config/sonivex/presets/x.preset")));
}

TEST_F(Preset, IsNotSavedByACommandLineThatIsRefused) {
    for (const std::vector<std::string>& paths : {std::vector<std::string>{file("in.wav")},
                                                  {file("in.wav"), "pipe:2"},
                                                  {"pipe:3", file("out.wav")}}) {
        std::vector<std::string> arguments = {"--save-preset", "x", "--format", "wav"};
        arguments.insert(arguments.end(), paths.begin(), paths.end());
        const auto result = runHere(arguments);
        EXPECT_EQ(result.exit_code, 2) << result.err;
        EXPECT_FALSE(std::filesystem::exists(file("config/sonivex/presets/x.preset"))) << result.err;
    }
}

TEST_F(Preset, AFaultyOneIsRefusedWithItsFile) {
    test::writeFile(file("bad.preset"), "effect = dialogue\nvoise = 2\n");
    const auto result = runHere({file("in.wav"), file("out.wav"), "--preset", "bad"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.err, "sonivex: cannot use the preset \"" + file("bad.preset") +
                              "\": unknown option \"voise\"; did you mean \"voice\"?\n");
    EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
    EXPECT_THAT(runHere({file("in.wav"), file("out.wav"), "--preset", "nihgt"}).err,
                StartsWith("sonivex: unknown preset \"nihgt\"; did you mean \"night\"?"));
}

TEST_F(Preset, TheListShowsNamesTitlesAndFiles) {
    test::writeFile(file("mine.preset"), "# For me alone\nvoice = 3\n");
    const auto result = runHere({"--list-presets"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("For me alone"));
    EXPECT_THAT(result.out, HasSubstr(file("mine.preset")));
    EXPECT_THAT(result.out, HasSubstr("night "));
}

TEST_F(Preset, EachOneThatIsShippedHasATitleAndRenders) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(SONIVEX_SHIPPED_PRESETS)) {
        if (entry.path().extension() != ".preset") continue;
        ++count;
        const std::string name = entry.path().stem().string();
        const std::string contents = test::readFile(entry.path().string());
        EXPECT_THAT(contents, StartsWith("# ")) << name;
        const std::string out = rendered(name + ".wav", {"--preset", name});
        EXPECT_FALSE(out.empty());
        EXPECT_FALSE(out == test::readFile(file("in.wav"))) << name;
    }
    EXPECT_GE(count, 4);
}

}  // namespace
