#include "effect_choice.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::describe;
using sonivex_tool::EffectChoice;
using sonivex_tool::findEffect;
using sonivex_tool::withNextEffect;
using sonivex_tool::withNextMode;
using sonivex_tool::withNextType;
using sonivex_tool::withVoice;

EffectChoice only(const char* name) {
    return {.chain = {findEffect(name)}, .options = {}};
}

TEST(EffectChoice, NextEffectGoesRound) {
    const std::vector<std::vector<const sonivex_tool::Effect*>> chains = {
        {findEffect("dialogue"), findEffect("normalizer")},
        {findEffect("normalizer")},
        {findEffect("surround")}};
    EffectChoice choice = only("normalizer");
    choice = withNextEffect(choice, chains);
    EXPECT_EQ(describe(choice), "surround (3DSurround)");
    choice = withNextEffect(choice, chains);
    EXPECT_EQ(describe(choice), "dialogue (voice 1), normalizer");
    choice = withNextEffect(choice, chains);
    EXPECT_EQ(describe(choice), "normalizer");
}

TEST(EffectChoice, TypeAndModeBelongToSurround) {
    EXPECT_FALSE(withNextType(only("dialogue")).has_value());
    EXPECT_FALSE(withNextMode(only("surround")).has_value());
    auto choice = withNextType(only("surround"));
    ASSERT_TRUE(choice.has_value());
    for (const char* text :
         {"surround (MegaBass, mode 2)", "surround (MegaBass, mode 3)", "surround (MegaBass, mode 1)"}) {
        choice = withNextMode(*choice);
        ASSERT_TRUE(choice.has_value());
        EXPECT_EQ(describe(*choice), text);
    }
    EXPECT_EQ(describe(*withNextType(*choice)), "surround (3DSurround)");
}

TEST(EffectChoice, TheVoiceStaysWithinItsRange) {
    EXPECT_FALSE(withVoice(only("surround"), 0.5).has_value());
    auto choice = withVoice(only("dialogue"), 0.5);
    EXPECT_EQ(describe(*choice), "dialogue (voice 1.5)");
    for (int i = 0; i < 100; ++i) choice = withVoice(*choice, 0.5);
    EXPECT_EQ(choice->options.voice, sonivex_tool::kHighestVoiceByKey);
    for (int i = 0; i < 100; ++i) choice = withVoice(*choice, -0.5);
    EXPECT_EQ(choice->options.voice, 1.0);
}

}  // namespace
