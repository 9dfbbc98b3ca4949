#include "stream_choice.h"

#include <gtest/gtest.h>

namespace {

using namespace sonivex_tool;

const std::vector<AudioTrack> kTracks = {
    {"ger", "", false}, {"eng", "Film", true}, {"eng", "Comments", false}, {"", "", false}};

TEST(StreamChoice, TakesTheDefaultStreamOrElseTheFirst) {
    EXPECT_EQ(chooseTrack(kTracks, {}), 1U);
    EXPECT_EQ(chooseTrack({{"eng", "", false}, {"deu", "", false}}, {}), 0U);
    EXPECT_EQ(chooseTrack({}, {}), std::nullopt);
}

TEST(StreamChoice, TakesANumber) {
    EXPECT_EQ(chooseTrack(kTracks, "0"), 0U);
    EXPECT_EQ(chooseTrack(kTracks, "3"), 3U);
    for (const char* wish : {"4", "-1", "99999999999999999999", "1x", ""})
        EXPECT_EQ(chooseTrack(kTracks, wish), std::nullopt) << wish;
}

TEST(StreamChoice, TakesALanguageByAnyOfItsCodes) {
    for (const char* wish : {"de", "deu", "ger", "GER", "De-AT"})
        EXPECT_EQ(chooseTrack(kTracks, wish), 0U) << wish;
    EXPECT_EQ(chooseTrack(kTracks, "en"), 1U);
    EXPECT_EQ(chooseTrack(kTracks, "fra"), std::nullopt);
    EXPECT_EQ(chooseTrack({{"tlh", "", false}, {"qaa", "", false}}, "QAA"), 1U);
}

TEST(StreamChoice, PrefersTheDefaultStreamOfALanguage) {
    EXPECT_EQ(chooseTrack({{"eng", "", false}, {"eng", "", true}}, "eng"), 1U);
    EXPECT_EQ(chooseTrack({{"deu", "", true}, {"eng", "", false}, {"eng", "", false}}, "eng"), 1U);
}

TEST(StreamChoice, ListsTheStreams) {
    EXPECT_EQ(listOf(kTracks), "0 (ger), 1 (eng, default), 2 (eng), 3");
}

}  // namespace
