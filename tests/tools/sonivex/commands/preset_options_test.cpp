#include "preset_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "failure.h"
#include "tools/sonivex/commands/parsed_render.h"

namespace {

using sonivex_tool::Failure;
using sonivex_tool::RenderChoices;
using testing::HasSubstr;

// The command line of `render` with a preset, as the program treats it.
class PresetOptions : public testing::Test {
  protected:
    void parse(const std::vector<std::string>& arguments, const std::string& preset) {
        sonivex_tool::addRenderOptions(app_, choices_);
        app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        sonivex_tool::applyPreset(app_, preset, "some.preset");
        sonivex_tool::checkChoices(choices_);
    }

    static std::string refusalOf(const std::string& preset) {
        try {
            CLI::App app;
            RenderChoices choices;
            sonivex_tool::addRenderOptions(app, choices);
            app.parse(std::vector<std::string>());
            sonivex_tool::applyPreset(app, preset, "some.preset");
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), sonivex_tool::ExitCode::Usage);
            return failure.what();
        }
        return "accepted";
    }

    CLI::App app_;
    RenderChoices choices_;
};

constexpr char kFullPreset[] =
    "# A preset with every kind of value\n"
    "effect = dialogue,normalizer  # two in a row\n"
    "\n"
    "voice=2.5\n"
    "layout = \"stereo\"\n"
    "target-lufs = -23\n"
    "no-dither = true\n"
    "strict\n"
    "bitrate = 192k\n"
    "timeline = ignore\n";

TEST_F(PresetOptions, GivesTheOptionsThatTheCommandLineLeavesOpen) {
    parse({"in", "out"}, kFullPreset);
    const auto& settings = choices_.settings;
    ASSERT_EQ(settings.filter.chain.size(), 2U);
    EXPECT_EQ(settings.filter.chain[0]->name, "dialogue");
    EXPECT_EQ(settings.filter.chain[1]->name, "normalizer");
    EXPECT_EQ(settings.filter.options.voice, 2.5);
    EXPECT_EQ(settings.conversion.layout, "stereo");
    EXPECT_EQ(settings.level.target_lufs, -23.0);
    EXPECT_FALSE(settings.output.dither);
    EXPECT_TRUE(settings.conversion.strict);
    EXPECT_EQ(settings.output.bit_rate, 192000);
    EXPECT_EQ(settings.input.timeline, sonivex_tool::TimelinePolicy::Ignore);
    EXPECT_EQ(settings.input.path, "in");
}

TEST_F(PresetOptions, TheCommandLineWins) {
    parse({"--voice", "4", "--bitrate", "64k", "--strict=false", "--timeline", "keep"}, kFullPreset);
    EXPECT_EQ(choices_.settings.filter.options.voice, 4.0);
    EXPECT_EQ(choices_.settings.output.bit_rate, 64000);
    EXPECT_FALSE(choices_.settings.conversion.strict);
    EXPECT_EQ(choices_.settings.input.timeline, sonivex_tool::TimelinePolicy::Keep);
    EXPECT_EQ(choices_.settings.level.target_lufs, -23.0);
}

TEST_F(PresetOptions, OptionsOfEffectsThatTheCommandLineLeavesOutAreDropped) {
    parse({"--effect", "surround", "--type", "3DSurround"},
          "effect = surround,dialogue\nvoice = 2\ntype = MegaBass\nmode = 3\ntail = true\n");
    EXPECT_EQ(choices_.settings.filter.options.voice, std::nullopt);
    EXPECT_EQ(choices_.settings.filter.options.surround_mode, std::nullopt);
    EXPECT_EQ(choices_.settings.filter.options.surround_type, "3DSurround");
    EXPECT_TRUE(choices_.settings.filter.keep_tail);
}

TEST_F(PresetOptions, ASavedPresetGivesTheSameOptionsAgain) {
    parse({"--effect", "surround", "--type", "MegaBass", "--mode", "2", "--layout", "5.1(side)", "--tail",
           "--true-peak", "-2", "--strict=false", "--dump", "folder", "--force"},
          "target-lufs = -18.5\nbitrate = 1.5M\nsample-format = s24\n");
    const std::string saved = sonivex_tool::presetOf(app_);
    EXPECT_THAT(saved, testing::Not(HasSubstr("dump")));
    EXPECT_THAT(saved, testing::Not(HasSubstr("force")));

    CLI::App app;
    RenderChoices again;
    sonivex_tool::addRenderOptions(app, again);
    app.parse(std::vector<std::string>());
    sonivex_tool::applyPreset(app, saved, "saved.preset");
    sonivex_tool::checkChoices(again);
    EXPECT_EQ(again.effects, "surround");
    EXPECT_EQ(again.settings.filter.options.surround_type, "MegaBass");
    EXPECT_EQ(again.settings.filter.options.surround_mode, 2);
    EXPECT_EQ(again.settings.conversion.layout, "5.1(side)");
    EXPECT_TRUE(again.settings.filter.keep_tail);
    EXPECT_FALSE(again.settings.conversion.strict);
    EXPECT_EQ(again.settings.level.target_lufs, -18.5);
    EXPECT_EQ(again.settings.level.true_peak_dbtp, -2.0);
    EXPECT_EQ(again.settings.output.bit_rate, 1500000);
    EXPECT_EQ(again.settings.output.sample_format, "s24");
    EXPECT_EQ(sonivex_tool::presetOf(app), saved);
}

TEST_F(PresetOptions, AFlagIsSavedAsTrueOrFalseHoweverItWasSet) {
    parse({"in", "out", "--strict= 2", "--no-dither=off"}, "");
    EXPECT_THAT(sonivex_tool::presetOf(app_),
                AllOf(HasSubstr("strict = true\n"), HasSubstr("no-dither = false\n")));
}

TEST_F(PresetOptions, AValueThatAPresetCannotHoldIsNotSaved) {
    for (const std::string value : {"a'\"b", "flac\nvoice = 9", "a\\", "`", "#a b=c"}) {
        CLI::App app;
        RenderChoices choices;
        sonivex_tool::addRenderOptions(app, choices);
        app.parse(std::vector<std::string>{"--format=" + value});
        EXPECT_THROW(sonivex_tool::presetOf(app), Failure) << value;
    }
}

TEST_F(PresetOptions, EveryAllowedNameIsAnOption) {
    parse({}, "");
    for (const std::string& name : sonivex_tool::presetOptionNames())
        EXPECT_NE(app_.get_option_no_throw("--" + name), nullptr) << name;
}

TEST_F(PresetOptions, BadLinesAreNamed) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"effct = surround\n", "unknown option \"effct\"; did you mean \"effect\"?"},
        {"force = true\n", "\"force\" belongs on the command line"},
        {"dump = /tmp\n", "\"dump\" belongs on the command line"},
        {"preset = night\n", "\"preset\" belongs on the command line"},
        {"IN = a.wav\n", "IN"},
        {"[render]\neffect = surround\n", "no sections"},
        {"effect.type = MegaBass\n", "no sections"},
        {"voice = 0.5\n", "--voice: must be"},
        {"voice = 2 3\n", "--voice: must be"},
        {"voice =\n", "--voice: must be"},
        {"voice = 2\neffect = dialogue\nvoice = 3\n", "\"voice\" is given twice"},
        {"effect = normaliser\n", "did you mean \"normalizer\"?"},
        {"mode = 4\n", "--mode"},
        {"mode = two\n", "--mode"},
        {"tail = maybe\n", "--tail"},
        {"tail = true, true\n", "--tail"},
        {"# title\nx\n", "line 2: \"x\""},
        {"effect = [", "\"[\""},
        {"\x01\x02\x03\xff\n", "unknown option"},
    };
    for (const auto& [preset, part] : rows) {
        const std::string refusal = refusalOf(preset);
        EXPECT_THAT(refusal, HasSubstr("\"some.preset\"")) << preset;
        EXPECT_THAT(refusal, HasSubstr(part)) << preset;
    }
}

TEST_F(PresetOptions, APresetMayHaveCommentsOnly) {
    for (const char* preset : {"", "\n\n", "#\n# nothing\n", "; nothing\n"})
        EXPECT_EQ(refusalOf(preset), "accepted") << preset;
}

}  // namespace
