#include "effect.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using namespace sonivex_tool;
using nlohmann::json;

TEST(EffectCatalogue, ListsTheNormalizerFirstAsTheDefault) {
    EXPECT_EQ(allEffects().front().name, "normalizer");
}

TEST(EffectCatalogue, OptionsEnableTheEffectAndContainOnlyWhatTheUserSet) {
    EXPECT_EQ(json::parse(optionsJson(*findEffect("normalizer"), {})), json({{"enable_normalizer", true}}));
    FilterOptions options;
    options.surround_type = "MegaBass";
    options.surround_mode = 3;
    options.no_limiter = true;
    options.voice = 2.5;
    EXPECT_EQ(json::parse(optionsJson(*findEffect("surround"), options)),
              json({{"enable_surround", true},
                    {"surround_effect_type", "MegaBass"},
                    {"surround_mode", 3},
                    {"surround_limiter", 0},
                    {"dialoguenhance_voice", 2.5}}));
    EXPECT_TRUE(json::parse(optionsJson(*findEffect("dialogue"), {})).contains("enable_dialoguenhance"));
}

TEST(EffectCatalogue, OptionsEnableDumpsOnRequest) {
    FilterOptions options;
    options.dump = true;
    EXPECT_EQ(json::parse(optionsJson(*findEffect("normalizer"), options)),
              json({{"enable_normalizer", true}, {"enable_dump", true}}));
}

// Dialogue enhancement outputs a block of 512 frames three blocks later. The other effects output it at once.
TEST(EffectCatalogue, DelayIsQueueDelayPlusEffectDelay) {
    EXPECT_EQ(effectDelayFrames(*findEffect("normalizer"), 512), 0);
    EXPECT_EQ(effectDelayFrames(*findEffect("normalizer"), 256), 256);
    EXPECT_EQ(effectDelayFrames(*findEffect("surround"), 480), 0);
    EXPECT_EQ(effectDelayFrames(*findEffect("dialogue"), 512), 1536);
    EXPECT_EQ(effectDelayFrames(*findEffect("dialogue"), 256), 1792);
    EXPECT_EQ(effectDelayFrames(*findEffect("dialogue"), 300), std::nullopt);
}

TEST(EffectCatalogue, ExplainsWhichAudioAnEffectDoesNotSupport) {
    const Effect& normalizer = *findEffect("normalizer");
    EXPECT_EQ(whyUnsupported(normalizer, 8, 16000), "");
    EXPECT_EQ(whyUnsupported(normalizer, 3, 48000), "the normalizer supports 1, 2, 6 or 8 channels, not 3");
    EXPECT_EQ(whyUnsupported(normalizer, 2, 22050),
              "the normalizer supports 16000, 44100 or 48000 Hz, not 22050");
    EXPECT_NE(whyUnsupported(*findEffect("surround"), 2, 16000), "");
    EXPECT_NE(whyUnsupported(*findEffect("dialogue"), 1, 48000), "");
    EXPECT_EQ(findEffect("reverb"), nullptr);
}

}  // namespace
