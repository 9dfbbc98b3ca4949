#include "effect.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using namespace sonivex_tool;
using nlohmann::json;

TEST(Effect, TheNormalizerIsTheDefault) {
    EXPECT_EQ(allEffects().front().name, "normalizer");
}

TEST(Effect, OptionsNameTheEffectAndOnlyWhatWasSet) {
    EXPECT_EQ(json::parse(optionsJson(*findEffect("normalizer"), {})), json({{"enable_normalizer", true}}));
    FilterOptions options;
    options.surroundType = "MegaBass";
    options.surroundMode = 3;
    options.noLimiter = true;
    options.voice = 2.5;
    EXPECT_EQ(json::parse(optionsJson(*findEffect("surround"), options)),
              json({{"enable_surround", true},
                    {"surround_effect_type", "MegaBass"},
                    {"surround_mode", 3},
                    {"surround_limiter", 0},
                    {"dialoguenhance_voice", 2.5}}));
    EXPECT_TRUE(json::parse(optionsJson(*findEffect("dialogue"), {})).contains("enable_dialoguenhance"));
}

TEST(Effect, SaysWhatItDoesNotTake) {
    const Effect& normalizer = *findEffect("normalizer");
    EXPECT_EQ(whyUnsupported(normalizer, 8, 16000), "");
    EXPECT_EQ(whyUnsupported(normalizer, 3, 48000), "the normalizer takes 1, 2, 6 or 8 channels, not 3");
    EXPECT_EQ(whyUnsupported(normalizer, 2, 22050),
              "the normalizer takes 16000, 44100 or 48000 Hz, not 22050");
    EXPECT_NE(whyUnsupported(*findEffect("surround"), 2, 16000), "");
    EXPECT_NE(whyUnsupported(*findEffect("dialogue"), 1, 48000), "");
    EXPECT_EQ(findEffect("reverb"), nullptr);
}

}  // namespace
