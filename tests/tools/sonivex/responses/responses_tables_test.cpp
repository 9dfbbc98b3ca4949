#include "responses_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using sonivex_tool::allResponseSets;
using sonivex_tool::findResponseSet;
using testing::ElementsAre;

TEST(ResponseSets, ContainEveryTableOnce) {
    std::set<std::string> names;
    size_t sources = 0;
    for (const auto& set : allResponseSets()) {
        EXPECT_EQ(findResponseSet(set.name), &set);
        sources += set.sources.size();
        for (const auto& source : set.sources) {
            names.insert(source.left.name);
            names.insert(source.right.name);
        }
    }
    // 3DSurround has 2 + 6 + 8 sources, and each of the 3 modes has 2 + 5 + 7, with two tables each. The
    // Audio stage has one source with one table.
    EXPECT_EQ(sources, 16U + 42U + 1U);
    EXPECT_EQ(names.size(), 2U * (16U + 42U) + 1U);
    EXPECT_EQ(findResponseSet("nothing"), nullptr);
}

TEST(ResponseSets, AssignEachTableToItsEar) {
    const auto& source = findResponseSet("7.1-mode2")->sources.at(3);
    EXPECT_EQ(source.left.name, "7_1_4_h_mode2L48");
    EXPECT_EQ(source.right.name, "7_1_4_h_mode2R48");
    EXPECT_EQ(source.left.samples.size(), 7000U);
}

TEST(ResponseSets, NameTheLoudspeakerOfEachSource) {
    const auto names = [](const char* set) {
        std::vector<std::string> all;
        for (const auto& source : findResponseSet(set)->sources) all.push_back(source.loudspeaker);
        return all;
    };
    EXPECT_THAT(names("cingo"), ElementsAre("front left", "front right"));
    EXPECT_THAT(names("2.0-mode3"), ElementsAre("front left", "front right"));
    EXPECT_THAT(names("bingo-5.1"), ElementsAre("front left", "front right", "centre", "low frequency",
                                                "surround left", "surround right"));
    EXPECT_THAT(names("5.1-mode1"),
                ElementsAre("front left", "front right", "centre", "surround left", "surround right"));
    EXPECT_THAT(names("bingo-7.1"), ElementsAre("front left", "front right", "centre", "low frequency",
                                                "back left", "back right", "side left", "side right"));
    EXPECT_THAT(names("7.1-mode2"), ElementsAre("front left", "front right", "centre", "back left",
                                                "back right", "side left", "side right"));
    EXPECT_THAT(names("audio"), ElementsAre(""));
}

}  // namespace
