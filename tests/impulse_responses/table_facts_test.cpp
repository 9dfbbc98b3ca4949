// Facts that readers of the tables may rely on: names, lengths, peaks, sides, and which tables are equal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "compiled_tables.h"

namespace response_quality {
namespace {

// Expected facts of one set. `sides` has one letter for each source: l left, r right, c centre, e centre with
// equal ears, b low-frequency channel.
struct ExpectedSet {
    std::string_view layout;  // as in the tables' names; empty for cingo
    std::string_view kind;    // as in the tables' names
    std::string_view sides;
    std::size_t samples;
    int peak;
};

constexpr ExpectedSet kExpected[] = {
    {"", "", "lr", 13000, 9597},
    {"5_1", "c", "lrcblr", 8544, 32392},
    {"7_1", "c", "lrcblrlr", 8640, 32392},
    {"2", "mode1", "lr", 7000, 16805},
    {"2", "mode2", "lr", 7000, 14977},
    {"2", "mode3", "lr", 7000, 13349},
    {"5_1", "mode1", "lrelr", 7000, 16805},
    {"5_1", "mode2", "lrelr", 7000, 14977},
    {"5_1", "mode3", "lrelr", 7000, 13349},
    {"7_1", "mode1", "lrelrlr", 7000, 16805},
    {"7_1", "mode2", "lrelrlr", 7000, 14977},
    {"7_1", "mode3", "lrelrlr", 7000, 13349},
};

constexpr double kCentreSpread = 1.3;  // limit of the ratio of the peaks at the two ears

std::string expectedName(const ExpectedSet& set, std::size_t source, char ear) {
    std::string name = "k_";
    if (set.layout.empty()) {
        name += "cingo";
        name += source == 0 ? 'L' : 'R';
    } else {
        name += set.layout;
        name += '_';
        name += std::to_string(source + 1);
        name += "_h_";
        name += set.kind;
    }
    name += ear;
    name += "48";
    return name;
}

// Calls check(expected set, compiled set, index of the source) for each source.
template <typename Check>
void forEachSource(Check check) {
    ASSERT_EQ(compiledSets().size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const TableSet& set = compiledSets()[i];
        ASSERT_EQ(set.tables.size(), 2 * kExpected[i].sides.size()) << set.name;
        for (std::size_t source = 0; source < kExpected[i].sides.size(); ++source) {
            SCOPED_TRACE(std::string(set.name) + " source " + std::to_string(source + 1));
            check(kExpected[i], set, source);
        }
    }
}

TEST(QualityTableFacts, NamesGiveLayoutSourceSetEarAndRate) {
    std::size_t count = 2;  // the Audio stage has two names
    forEachSource([&count](const ExpectedSet& expected, const TableSet& set, std::size_t source) {
        EXPECT_EQ(set.tables[2 * source].name, expectedName(expected, source, 'L'));
        EXPECT_EQ(set.tables[2 * source + 1].name, expectedName(expected, source, 'R'));
        count += 2;
    });
    EXPECT_EQ(count, 118u);
    EXPECT_EQ(compiledAudioStage().name, "k_dolby441");
}

TEST(QualityTableFacts, HaveTheLengthOfTheirSet) {
    forEachSource([](const ExpectedSet& expected, const TableSet& set, std::size_t source) {
        EXPECT_EQ(set.tables[2 * source].samples.size(), expected.samples);
        EXPECT_EQ(set.tables[2 * source + 1].samples.size(), expected.samples);
    });
    EXPECT_EQ(compiledAudioStage().samples.size(), 6000u);
}

TEST(QualityTableFacts, LargestMagnitudeOfEachSetIsExact) {
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        int peak = 0;
        for (const Table& table : compiledSets()[i].tables) peak = std::max(peak, peakOf(table));
        EXPECT_EQ(peak, kExpected[i].peak) << compiledSets()[i].name;
    }
    EXPECT_EQ(peakOf(compiledAudioStage()), 26905);
}

TEST(QualityTableFacts, SourceIsLouderAtTheNearEar) {
    forEachSource([](const ExpectedSet& expected, const TableSet& set, std::size_t source) {
        const double left = peakOf(set.tables[2 * source]);
        const double right = peakOf(set.tables[2 * source + 1]);
        switch (expected.sides[source]) {
            case 'l':
                EXPECT_GT(left, kCentreSpread * right);
                break;
            case 'r':
                EXPECT_GT(right, kCentreSpread * left);
                break;
            default:
                EXPECT_LE(std::max(left, right), kCentreSpread * std::min(left, right));
        }
    });
}

TEST(QualityTableFacts, LowFrequencySourceHasTheLargestPeakOfBingo) {
    forEachSource([](const ExpectedSet& expected, const TableSet& set, std::size_t source) {
        if (expected.sides[source] == 'b') {
            EXPECT_EQ(std::max(peakOf(set.tables[2 * source]), peakOf(set.tables[2 * source + 1])), 32392);
        } else if (expected.kind == "c") {
            EXPECT_LT(peakOf(set.tables[2 * source]), 32392);
            EXPECT_LT(peakOf(set.tables[2 * source + 1]), 32392);
        }
    });
}

TEST(QualityTableFacts, OnlyTheEarsOfTheModesCentreAreEqual) {
    std::vector<Table> all{compiledAudioStage()};
    std::vector<std::string> expected;
    forEachSource([&](const ExpectedSet& facts, const TableSet& set, std::size_t source) {
        all.push_back(set.tables[2 * source]);
        all.push_back(set.tables[2 * source + 1]);
        if (facts.sides[source] == 'e') {
            expected.push_back(expectedName(facts, source, 'L') + " = " + expectedName(facts, source, 'R'));
        }
    });
    ASSERT_EQ(all.size(), 117u);
    std::vector<std::string> found;
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = i + 1; j < all.size(); ++j) {
            if (std::equal(all[i].samples.begin(), all[i].samples.end(), all[j].samples.begin(),
                           all[j].samples.end())) {
                found.push_back(std::string(all[i].name) + " = " + std::string(all[j].name));
            }
        }
    }
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(expected.size(), 6u);
}

}  // namespace
}  // namespace response_quality
