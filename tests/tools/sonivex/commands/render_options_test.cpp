#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "failure.h"
#include "tools/sonivex/commands/parsed_render.h"

namespace {

using sonivex_tool::Failure;
using sonivex_tool::RenderSettings;
using sonivex_tool::TimelinePolicy;
using testing::HasSubstr;

RenderSettings settingsOf(const std::vector<std::string>& arguments) {
    return test::parsedRender(arguments).settings;
}

std::string refusalOf(const std::vector<std::string>& arguments) {
    try {
        test::parsedRender(arguments);
    } catch (const CLI::ParseError& error) {
        return error.what();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), sonivex_tool::ExitCode::Usage);
        return failure.what();
    }
    return "accepted";
}

TEST(RenderOptions, InputOptionsReachTheSettings) {
    EXPECT_EQ(settingsOf({"in", "out"}).input.path, "in");
    EXPECT_EQ(settingsOf({"-", "out"}).input.path, "-");
    EXPECT_EQ(settingsOf({"in", "out"}).input.stream, std::nullopt);
    EXPECT_EQ(settingsOf({"--stream", "2"}).input.stream, "2");
    EXPECT_EQ(settingsOf({"--stream", "eng"}).input.stream, "eng");
    EXPECT_EQ(settingsOf({}).input.timeline, TimelinePolicy::Keep);
    EXPECT_EQ(settingsOf({"--timeline", "ignore"}).input.timeline, TimelinePolicy::Ignore);
    EXPECT_FALSE(settingsOf({}).trim_start);
    EXPECT_TRUE(settingsOf({"--trim-start"}).trim_start);
    EXPECT_TRUE(settingsOf({"--ignore-damage"}).ignore_damage);
}

TEST(RenderOptions, EffectsFormAChainInTheOrderGiven) {
    const auto names = [](const std::vector<std::string>& arguments) {
        std::vector<std::string> all;
        for (const auto* effect : settingsOf(arguments).filter.chain) all.push_back(effect->name);
        return all;
    };
    EXPECT_EQ(names({}), std::vector<std::string>{"normalizer"});
    EXPECT_EQ(names({"--effect", "surround"}), std::vector<std::string>{"surround"});
    EXPECT_EQ(names({"--effect", "normalizer,dialogue"}),
              (std::vector<std::string>{"normalizer", "dialogue"}));
}

TEST(RenderOptions, ConversionAndLevelOptionsReachTheSettings) {
    const auto plain = settingsOf({});
    EXPECT_EQ(plain.conversion.rate_hz, std::nullopt);
    EXPECT_EQ(plain.conversion.layout, std::nullopt);
    EXPECT_FALSE(plain.conversion.strict);
    EXPECT_TRUE(plain.conversion.dither);
    EXPECT_TRUE(plain.output.dither);
    EXPECT_EQ(plain.level.target_lufs, std::nullopt);
    EXPECT_EQ(plain.level.true_peak_dbtp, -1.0);
    EXPECT_TRUE(plain.level.measure);

    const auto chosen = settingsOf({"--rate", "44100", "--layout", "5.1(side)", "--strict", "--no-dither",
                                    "--target-lufs", "-23", "--true-peak", "-2.5"});
    EXPECT_EQ(chosen.conversion.rate_hz, 44100);
    EXPECT_EQ(chosen.conversion.layout, "5.1(side)");
    EXPECT_TRUE(chosen.conversion.strict);
    EXPECT_FALSE(chosen.conversion.dither);
    EXPECT_FALSE(chosen.output.dither);
    EXPECT_EQ(chosen.level.target_lufs, -23.0);
    EXPECT_EQ(chosen.level.true_peak_dbtp, -2.5);
    EXPECT_FALSE(settingsOf({"--no-measure"}).level.measure);
}

TEST(RenderOptions, OutputOptionsReachTheSettings) {
    const auto chosen =
        settingsOf({"in", "-", "--format", "matroska", "--codec", "opus", "--bitrate", "192k",
                    "--sample-format", "s24", "--keep-others", "--audio-only", "--force", "--dry-run"});
    EXPECT_EQ(chosen.output.path, "-");
    EXPECT_EQ(chosen.output.format, "matroska");
    EXPECT_EQ(chosen.output.codec, "opus");
    EXPECT_EQ(chosen.output.bit_rate, 192000);
    EXPECT_EQ(chosen.output.sample_format, "s24");
    EXPECT_TRUE(chosen.output.keep_other_audio);
    EXPECT_TRUE(chosen.output.audio_only);
    EXPECT_TRUE(chosen.output.replace);
    EXPECT_TRUE(chosen.dry_run);
    const auto plain = settingsOf({"in", "out"});
    EXPECT_EQ(plain.output.format, std::nullopt);
    EXPECT_FALSE(plain.output.keep_other_audio || plain.output.audio_only || plain.output.replace);
    EXPECT_FALSE(plain.dry_run);
}

TEST(RenderOptions, BitRatesHaveUnits) {
    EXPECT_EQ(settingsOf({"--bitrate", "256000"}).output.bit_rate, 256000);
    EXPECT_EQ(settingsOf({"--bitrate", "1.5M"}).output.bit_rate, 1500000);
    EXPECT_EQ(settingsOf({"--bitrate", "100M"}).output.bit_rate, 100000000);
    EXPECT_EQ(settingsOf({"--bitrate", "500"}).output.bit_rate, 500);
    for (const char* rate : {"", "k", "499", "192kk", "192 kbit", "101M", "-1k", "nan", "inf", "1e30"})
        EXPECT_THAT(refusalOf({"--bitrate", rate}), HasSubstr("--bitrate: must be")) << rate;
}

TEST(RenderOptions, NumbersOutsideTheirRangeAreRefused) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> bad = {
        {"--rate", {"0", "999", "768001", "48k", "nan", ""}},
        {"--target-lufs", {"-70.1", "-4.9", "0", "nan", "loud", ""}},
        {"--true-peak", {"0.1", "-20.1", "inf", ""}},
        {"--stream", {"-1", "10000", "e", "1e", "", "e g"}},
        {"--layout", {"", "5,1", "surround"}},
        {"--timeline", {"", "kept"}},
        {"--sample-format", {"", "s20"}},
        {"--format", {""}},
        {"--codec", {""}},
    };
    for (const auto& [option, values] : bad) {
        for (const auto& value : values) {
            EXPECT_THAT(refusalOf({option, value}), HasSubstr(option + ": ")) << option << " " << value;
        }
    }
}

TEST(RenderOptions, AnOptionWithoutItsEffectIsRefusedAndNamesTheEffect) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
        {{"--voice", "2"}, "dialogue"},         {{"--type", "MegaBass"}, "surround"},
        {{"--no-limiter"}, "surround"},         {{"--tail"}, "surround"},
        {{"--type", "3DSurround"}, "surround"}, {{"--mode", "2", "--type", "MegaBass"}, "surround"},
    };
    for (const auto& [options, owner] : rows) {
        const std::string other = owner == "surround" ? "dialogue" : "surround";
        const std::string part = " belongs to " + owner;
        EXPECT_THAT(refusalOf(options), HasSubstr(part));
        for (const std::string& effects : {other, other + ",normalizer"}) {
            auto all = options;
            all.insert(all.end(), {"--effect", effects});
            EXPECT_THAT(refusalOf(all), HasSubstr(part + ", and the effect is " + effects));
        }
        auto with_owner = options;
        with_owner.insert(with_owner.end(), {"--effect", "normalizer," + owner});
        EXPECT_EQ(refusalOf(with_owner), "accepted");
    }
}

TEST(RenderOptions, ModeWithoutMegaBassIsRefused) {
    EXPECT_THAT(refusalOf({"--effect", "surround", "--mode", "2"}), HasSubstr("add --type MegaBass"));
    EXPECT_THAT(refusalOf({"--effect", "surround", "--mode", "2", "--type", "3DSurround"}),
                HasSubstr("add --type MegaBass"));
    EXPECT_EQ(refusalOf({"--effect", "surround", "--mode", "2", "--type", "MegaBass"}), "accepted");
}

TEST(RenderOptions, AnEffectNameThatIsUnknownRepeatedOrEmptyIsRefused) {
    EXPECT_THAT(refusalOf({"--effect", "dialogue,sorround"}),
                HasSubstr("unknown effect \"sorround\"; did you mean \"surround\"?"));
    EXPECT_THAT(refusalOf({"--effect", "dialogue,surround,dialogue"}), HasSubstr("names dialogue twice"));
    for (const char* effects : {"", ",", "surround,", ",surround", "surround,,dialogue"})
        EXPECT_THAT(refusalOf({"--effect", effects}), HasSubstr("separated by commas")) << effects;
}

TEST(RenderOptions, LevelOptionsThatContradictEachOtherAreRefused) {
    EXPECT_THAT(refusalOf({"--true-peak", "-1"}), HasSubstr("--true-peak belongs to --target-lufs"));
    EXPECT_THAT(refusalOf({"--target-lufs", "-23", "--no-measure"}), HasSubstr("--no-measure"));
}

}  // namespace
