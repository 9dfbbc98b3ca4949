#include "layout_choice.h"

#include <gtest/gtest.h>

namespace {

using namespace sonivex_tool;

AVChannelLayout named(const std::string& name) {
    AVChannelLayout layout{};
    EXPECT_EQ(av_channel_layout_from_string(&layout, name.c_str()), 0) << name;
    return layout;
}

// Returns the layout that a chain gets, and the one that it gets it in: "5.0 in 5.1".
std::string choiceFor(const std::string& input, const std::vector<const Effect*>& chain) {
    const auto choice = chooseLayout(named(input), chain);
    if (!choice) return "nothing";
    const std::string mixed = layoutName(choice->mixed);
    const std::string work = layoutName(choice->work);
    return mixed == work ? mixed : mixed + " in " + work;
}

const Effect* const kNormalizer = findEffect("normalizer");
const Effect* const kSurround = findEffect("surround");
const Effect* const kDialogue = findEffect("dialogue");

TEST(LayoutChoice, LeavesEveryLayoutToAChainThatKeepsTheChannels) {
    for (const char* name :
         {"mono", "stereo", "5.1", "5.1(side)", "6.0", "hexagonal", "7.1", "7.1(wide)", "octagonal"})
        EXPECT_EQ(choiceFor(name, {kNormalizer}), name);
    for (const char* name : {"2.1", "3.0", "4.0", "quad", "5.0", "4.1"})
        EXPECT_EQ(choiceFor(name, {kNormalizer}), std::string(name) + " in 5.1");
    for (const char* name : {"6.1", "6.1(back)", "7.0"})
        EXPECT_EQ(choiceFor(name, {kNormalizer}), std::string(name) + " in 7.1");
}

TEST(LayoutChoice, PlacesLoudspeakersIntoTheLayoutsThatSurroundKnows) {
    EXPECT_EQ(choiceFor("mono", {kSurround}), "mono");
    EXPECT_EQ(choiceFor("stereo", {kSurround}), "stereo");
    EXPECT_EQ(choiceFor("downmix", {kSurround}), "stereo");
    for (const char* name :
         {"2.1", "3.0", "4.0", "quad", "5.0", "5.0(side)", "5.1", "5.1(side)", "hexagonal"})
        EXPECT_EQ(choiceFor(name, {kSurround}), "5.1");
    // Some of these loudspeakers are beside the listener and some behind.
    for (const char* name : {"6.0", "6.1", "7.0", "7.1", "7.1(wide)", "octagonal", "hexadecagonal", "22.2"})
        EXPECT_EQ(choiceFor(name, {kSurround}), "7.1");
}

TEST(LayoutChoice, GivesStereoToAChainThatTakesNothingElse) {
    for (const char* name : {"mono", "stereo", "2.1", "5.1", "7.1", "22.2"}) {
        EXPECT_EQ(choiceFor(name, {kDialogue}), "stereo");
        EXPECT_EQ(choiceFor(name, {kNormalizer, kDialogue}), "stereo");
    }
}

TEST(LayoutChoice, ServesSurroundBehindAnEffectThatKeepsTheChannels) {
    EXPECT_EQ(choiceFor("5.0", {kNormalizer, kSurround}), "5.1");
    EXPECT_EQ(choiceFor("7.1(wide)", {kNormalizer, kSurround}), "7.1");
    EXPECT_EQ(choiceFor("5.0", {kSurround, kDialogue, kNormalizer}), "5.1");
}

TEST(LayoutChoice, MixesMoreChannelsThanTheNormalizerTakes) {
    EXPECT_EQ(choiceFor("22.2", {kNormalizer}), "7.1");
    EXPECT_EQ(choiceFor("hexadecagonal", {kNormalizer}), "7.1");
}

TEST(LayoutChoice, DoesNotMixChannelsWithoutNames) {
    AVChannelLayout unnamed{};
    unnamed.order = AV_CHANNEL_ORDER_UNSPEC;
    unnamed.nb_channels = 9;
    EXPECT_FALSE(chooseLayout(unnamed, {kNormalizer}));
    EXPECT_FALSE(chooseLayout(unnamed, {kSurround}));
}

}  // namespace
