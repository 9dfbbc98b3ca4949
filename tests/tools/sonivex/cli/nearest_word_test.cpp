#include "nearest_word.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::didYouMean;
using sonivex_tool::nearestWord;

const std::vector<std::string> kCommands = {"render", "ears", "inspect", "responses", "speech", "bench"};

TEST(NearestWord, ForgivesOneMistakeOfEachKind) {
    EXPECT_EQ(nearestWord("rendr", kCommands), "render");    // missing
    EXPECT_EQ(nearestWord("reender", kCommands), "render");  // extra
    EXPECT_EQ(nearestWord("rander", kCommands), "render");   // wrong
    EXPECT_EQ(nearestWord("erndre", kCommands), "render");   // two swaps
    EXPECT_EQ(nearestWord("RENDER", kCommands), "render");
}

// The word differs in four letters, so swaps must count as one mistake each to be forgiven.
TEST(NearestWord, CountsASwapAsOneMistake) {
    EXPECT_EQ(nearestWord("isnpetc", {"inspect"}), "inspect");
    EXPECT_EQ(nearestWord("ixnpeyc", {"inspect"}), std::nullopt);
}

TEST(NearestWord, PrefersTheNearerCandidateAndThenTheFirst) {
    EXPECT_EQ(nearestWord("--model", {"--modal-x", "--mode"}), "--mode");
    EXPECT_EQ(nearestWord("--modx", {"--mode", "--modi"}), "--mode");
}

TEST(NearestWord, CompletesAWordThatBeginsOnlyOneCandidate) {
    EXPECT_EQ(nearestWord("resp", kCommands), "responses");
    EXPECT_EQ(nearestWord("norma", {"normalizer", "normal-voice"}), std::nullopt);
}

TEST(NearestWord, OffersNothingForOtherWords) {
    for (const char* word : {"", "r", "re", "convert", "master", "music.wav"})
        EXPECT_EQ(nearestWord(word, kCommands), std::nullopt) << word;
    EXPECT_EQ(nearestWord(std::string(100000, 'r'), kCommands), std::nullopt);
    EXPECT_EQ(nearestWord("render", {}), std::nullopt);
}

TEST(NearestWord, IsOfferedInAMessage) {
    EXPECT_EQ(didYouMean("rendr", kCommands), "; did you mean \"render\"?");
    EXPECT_EQ(didYouMean("master", kCommands), "");
}

}  // namespace
