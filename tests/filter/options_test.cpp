// Checks the effect of every key and JSON member of setOption, and the state that it leaves unchanged.
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "filter/faults/filter_under_test.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::filterPrototype;

TEST(FilterOptions, AcceptsAndIgnoresUnknownKeys) {
    FilterUnderTest filter;
    EXPECT_TRUE(filter->setOption("volume", "not json", "x"));
    EXPECT_TRUE(filter->setOption("", "", ""));
    EXPECT_TRUE(filter->setOption(std::string(filterPrototype::FILTER_OPTION) + "s", "not json", ""));
}

TEST(FilterOptions, RejectsTextThatIsNotJsonAndChangesNothing) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true, "surround_mode": 2})");
    for (const char* text :
         {"", "surround", "{", R"({"enable_surround": true)", R"({"surround_mode": 1e999e1})",
          "{\"enable_surround\": true, \"x\": \"\xff\"}"}) {
        EXPECT_FALSE(filter->setOption(filterPrototype::FILTER_OPTION, text, "")) << text;
    }
    EXPECT_EQ(log.count("24 options not json item"), 6);
    EXPECT_TRUE(filter.field(Peer::kEnableNormalizer));
    EXPECT_FALSE(filter.field(Peer::kEnableSurround));
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 2);
}

TEST(FilterOptions, AcceptsJsonThatIsNotAnObjectAndChangesNothing) {
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true})");
    for (const char* text :
         {"1", "null", "true", "\"enable_surround\"", "[]", R"([{"enable_surround": true}])", "{}"}) {
        filter.options(text);
        EXPECT_TRUE(filter.field(Peer::kEnableNormalizer)) << text;
        EXPECT_FALSE(filter.field(Peer::kEnableSurround)) << text;
    }
}

TEST(FilterOptions, AcceptsSurroundTypesOnlyByExactName) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.options(R"({"surround_effect_type": "MegaBass"})");
    EXPECT_EQ(filter.field(Peer::kSurroundType), 13);
    for (const char* name : {"megabass", "MegaBass ", "", "13"}) {
        filter.options(std::string(R"({"surround_effect_type": ")") + name + "\"}");
        EXPECT_EQ(filter.field(Peer::kSurroundType), 13) << name;
    }
    filter.options(R"({"surround_effect_type": 1})");
    EXPECT_EQ(filter.field(Peer::kSurroundType), 13) << "a number does not name a type";
    filter.options(R"({"surround_effect_type": "3DSurround"})");
    EXPECT_EQ(filter.field(Peer::kSurroundType), 1);
    EXPECT_EQ(log.count("48 sonivex set surround_effect_type: MegaBass -> 13"), 1);
    EXPECT_EQ(log.count("48 sonivex set surround_effect_type: 3DSurround -> 1"), 1);
    EXPECT_EQ(
        log.count("24 sonivex unknown surround_effect_type: megabass (supported: 3DSurround, MegaBass)"), 1);
}

TEST(FilterOptions, IgnoresSurroundModesOutsideOneToThreeWithoutALogLine) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.options(R"({"surround_mode": 3})");
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 3);
    const auto before = log.lines().size();
    for (const char* number : {"4", "0", "-1", "2.5", "1.0000001", "4294967298", "-4294967295", "1e999"}) {
        filter.options(std::string(R"({"surround_mode": )") + number + "}");
        EXPECT_EQ(filter.field(Peer::kSurroundMode), 3) << number;
    }
    EXPECT_EQ(log.lines().size(), before);
    filter.options(R"({"surround_mode": 2.0})");
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 2) << "2.0 is the integer 2";
}

TEST(FilterOptions, ReplacesAMemberOfTheWrongTypeByItsDefault) {
    FilterUnderTest filter;
    filter.options(R"({"surround_mode": 3, "surround_limiter": 0, "dialoguenhance_voice": 3,
                       "enable_normalizer": true, "enable_dump": true})");
    filter.options(R"({"surround_mode": "3", "surround_limiter": [0], "dialoguenhance_voice": "5",
                       "enable_normalizer": 1, "enable_dump": "yes"})");
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 1);
    EXPECT_EQ(filter.field(Peer::kSurroundLimiter), 1);
    EXPECT_EQ(filter.field(Peer::kVoice), 1.0);
    for (const char* other : {"true", "null", "{}", "[2]", "\"2\""}) {
        filter.options(R"({"surround_mode": 3})");
        filter.options(std::string(R"({"surround_mode": )") + other + "}");
        EXPECT_EQ(filter.field(Peer::kSurroundMode), 1) << other;
    }
    EXPECT_FALSE(filter.field(Peer::kEnableNormalizer));
    EXPECT_FALSE(filter.field(Peer::kEnableDump));
}

TEST(FilterOptions, AcceptsAnyIntForTheLimiterSwitch) {
    FilterUnderTest filter;
    filter.options(R"({"surround_limiter": -7})");
    EXPECT_EQ(filter.field(Peer::kSurroundLimiter), -7);
    for (const char* number : {"99999999999", "4294967297", "1.5", "-1e999"}) {
        filter.options(R"({"surround_limiter": 1})");
        filter.options(std::string(R"({"surround_limiter": )") + number + "}");
        EXPECT_NE(filter.field(Peer::kSurroundLimiter), 1)
            << number << " must not count as 1, which switches the limiter on";
    }
}

TEST(FilterOptions, AppliesTheRestOfAnObjectWithANumberBeyondADouble) {
    FilterUnderTest filter;
    filter.options(R"({"dialoguenhance_voice": 1e999, "enable_dialoguenhance": true})");
    EXPECT_EQ(filter.field(Peer::kVoice), std::numeric_limits<double>::max());
    EXPECT_TRUE(filter.field(Peer::kEnableDialogue));
    filter.options(R"({"dialoguenhance_voice": -1e999, "surround_mode": 2})");
    EXPECT_EQ(filter.field(Peer::kVoice), 1.0);
    EXPECT_EQ(filter.field(Peer::kSurroundMode), 2);
}

TEST(FilterOptions, RaisesAVoiceLevelBelowOneToOne) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.options(R"({"dialoguenhance_voice": 2.5})");
    EXPECT_EQ(filter.field(Peer::kVoice), 2.5);
    filter.options(R"({"dialoguenhance_voice": 0.5})");
    EXPECT_EQ(filter.field(Peer::kVoice), 1.0);
    EXPECT_EQ(log.count("48 sonivex set dialoguenhance_voice: 1.000000"), 1);
    filter.options(R"({"dialoguenhance_voice": -1e300})");
    EXPECT_EQ(filter.field(Peer::kVoice), 1.0);
}

TEST(FilterOptions, SwitchingOneEffectOnSwitchesTheOthersOff) {
    HostLogCapture log;
    FilterUnderTest filter;
    const auto state = [&filter] {
        return std::vector<bool>{filter.field(Peer::kEnableSurround), filter.field(Peer::kEnableDialogue),
                                 filter.field(Peer::kEnableNormalizer)};
    };
    using State = std::vector<bool>;
    filter.options(R"({"enable_surround": true})");
    EXPECT_EQ(state(), (State{true, false, false}));
    filter.options(R"({"enable_dialoguenhance": true})");
    EXPECT_EQ(state(), (State{false, true, false}));
    filter.options(R"({"enable_normalizer": true})");
    EXPECT_EQ(state(), (State{false, false, true}));
    filter.options(R"({"enable_surround": false, "enable_dialoguenhance": false})");
    EXPECT_EQ(state(), (State{false, false, true}));
    filter.options(R"({"enable_normalizer": false})");
    EXPECT_EQ(state(), (State{false, false, false}));
    for (const char* name : {"surround", "dialoguenhance", "normalizer"}) {
        EXPECT_EQ(log.count(std::string("48 sonivex set enable_") + name + ": true, disabled others"), 1);
        EXPECT_EQ(log.count(std::string("48 sonivex set enable_") + name + ": false"), 1);
    }
}

TEST(FilterOptions, EnablesOnlyTheLastOfSeveralEffectsInAFixedOrder) {
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true, "enable_surround": true})");
    EXPECT_TRUE(filter.field(Peer::kEnableNormalizer));
    EXPECT_FALSE(filter.field(Peer::kEnableSurround));
    filter.options(R"({"enable_dialoguenhance": true, "enable_surround": true})");
    EXPECT_TRUE(filter.field(Peer::kEnableDialogue));
    EXPECT_FALSE(filter.field(Peer::kEnableSurround));
    EXPECT_FALSE(filter.field(Peer::kEnableNormalizer));
}

TEST(FilterOptions, StoresTheDumpSwitch) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.options(R"({"enable_dump": true})");
    EXPECT_TRUE(filter.field(Peer::kEnableDump));
    filter.options(R"({"enable_dump": false})");
    EXPECT_FALSE(filter.field(Peer::kEnableDump));
    EXPECT_EQ(log.count("48 sonivex set enable_dump: 1"), 1);
    EXPECT_EQ(log.count("48 sonivex set enable_dump: 0"), 1);
}

TEST(FilterOptions, TruncatesFrameRateAndSpeedTowardZero) {
    HostLogCapture log;
    FilterUnderTest filter;
    const auto fps = [&filter](const char* text) {
        EXPECT_TRUE(filter->setOption(filterPrototype::VIDEO_FPS_OPTION, text, ""));
        return filter.field(Peer::kFps);
    };
    const auto speed = [&filter](const char* text) {
        EXPECT_TRUE(filter->setOption(filterPrototype::PLAYER_SPEED_OPTION, text, ""));
        return filter.field(Peer::kSpeed);
    };
    EXPECT_EQ(fps("29.97"), 29);
    EXPECT_EQ(fps("-29.97"), -29);
    EXPECT_EQ(fps(" 25 fps"), 25) << "text after a number is ignored";
    EXPECT_EQ(speed("1.5"), 1);
    EXPECT_EQ(speed("0.75"), 0);
    EXPECT_EQ(speed("1.99999999"), 2) << "the speed is rounded to a float first";
    EXPECT_EQ(log.count("48 sonivex set option fps : 29, isOverFps : 0"), 1);
    EXPECT_EQ(log.count("48 sonivex set option speed : 0, isOverFps : 0"), 1);
}

TEST(FilterOptions, SaturatesNumbersBeyondAnIntAndTakesNanAsZero) {
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    FilterUnderTest filter;
    const struct {
        const char* text;
        int value;
    } cases[] = {{"1e10", kMax}, {"-1e10", kMin}, {"inf", kMax}, {"-inf", kMin},
                 {"nan", 0},     {"1e999", kMax}, {"1e-999", 0}};
    for (const auto& example : cases) {
        filter->setOption(filterPrototype::VIDEO_FPS_OPTION, example.text, "");
        EXPECT_EQ(filter.field(Peer::kFps), example.value) << example.text;
        filter->setOption(filterPrototype::PLAYER_SPEED_OPTION, example.text, "");
        EXPECT_EQ(filter.field(Peer::kSpeed), example.value) << example.text;
        filter->checkTimeConsume(1000);
    }
}

TEST(FilterOptions, ThrowsInvalidArgumentForAMalformedNumber) {
    FilterUnderTest filter;
    for (const char* text : {"", "fast", "-", "{}"}) {
        EXPECT_THROW(filter->setOption(filterPrototype::VIDEO_FPS_OPTION, text, ""), std::invalid_argument)
            << text;
        EXPECT_THROW(filter->setOption(filterPrototype::PLAYER_SPEED_OPTION, text, ""), std::invalid_argument)
            << text;
    }
    EXPECT_EQ(filter.field(Peer::kFps), 0);
    EXPECT_EQ(filter.field(Peer::kSpeed), 1);
}

}  // namespace
}  // namespace test
