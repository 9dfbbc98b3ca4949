#include "tables.h"

#include <gtest/gtest.h>

#include <sstream>

#include "loudspeaker_sets.h"
#include "table_writer.h"

namespace {

using namespace sonivex_irgen;

TEST(IrgenTables, SourceHasAHeaderAndSixteenValuesPerLine) {
    TableSet set{};
    set.tables.push_back({"x", {}});
    for (std::int16_t n = 0; n < 18; ++n) set.tables[0].samples.push_back(static_cast<std::int16_t>(n - 1));
    const std::string text = tableSource({set}, {"abcd", 0.08426});
    EXPECT_NE(text.find("\nconst std::int16_t k_x[18] = {\n"
                        "-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14,\n15, 16,\n};\n"),
              std::string::npos);
    EXPECT_NE(text.find("SHA-256 of the SOFA file: abcd\n"), std::string::npos);
    EXPECT_NE(text.find("Head radius: 0.08426 m\n"), std::string::npos);
    EXPECT_NE(text.find("Bill Gardner and Keith Martin"), std::string::npos);
    EXPECT_NE(text.find("sonivex-irgen"), std::string::npos);
}

TEST(IrgenLoudspeakerSets, SeedsMatchTheCommittedTables) {
    const auto seeds = [](const LoudspeakerSet& set) {
        std::vector<std::uint64_t> all;
        for (const LoudspeakerGroup& group : set.groups) all.push_back(group.seed);
        return all;
    };
    const std::vector<LoudspeakerSet> sets = loudspeakerSets();
    using Seeds = std::vector<std::uint64_t>;
    ASSERT_EQ(sets.size(), 12U);
    EXPECT_EQ(seeds(sets[0]), (Seeds{101}));
    EXPECT_EQ(seeds(sets[1]), (Seeds{1000, 1010, 1090, 1020}));
    EXPECT_EQ(seeds(sets[2]), (Seeds{2000, 2010, 2090, 2020, 2030}));
    EXPECT_EQ(seeds(sets[5]), (Seeds{3300}));
    EXPECT_EQ(seeds(sets[6]), (Seeds{4100, 4110, 4120}));
    EXPECT_EQ(seeds(sets[11]), (Seeds{5300, 5310, 5320, 5330}));
}

TEST(IrgenLoudspeakerSets, BackPairComesBeforeTheSidePair) {
    const std::vector<LoudspeakerSet> sets = loudspeakerSets();
    for (const std::size_t i : {2U, 9U, 10U, 11U}) {
        const std::vector<LoudspeakerGroup>& groups = sets[i].groups;
        EXPECT_EQ(groups[groups.size() - 2].azimuth_deg, 140.0) << sets[i].name;
        EXPECT_EQ(groups[groups.size() - 1].azimuth_deg, 90.0) << sets[i].name;
    }
}

}  // namespace
