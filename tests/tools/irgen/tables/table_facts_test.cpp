#include "table_facts.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace sonivex_irgen;

// A table with one peak, and a small number that no other table has.
Table spike(const std::string& name, std::size_t samples, int peak) {
    static std::int16_t number = 0;
    Table table{name, std::vector<std::int16_t>(samples, 0)};
    table.samples[40] = static_cast<std::int16_t>(peak);
    table.samples[1000] = ++number;
    return table;
}

// A set that keeps all facts. `sides` has one letter for each source: l left, r right, c centre (with equal
// ears in a mode), b low-frequency channel.
TableSet validSet(const std::string& layout, const std::string& kind, std::size_t samples,
                  const std::string& sides, int peak) {
    TableSet set{};
    set.name = layout + " " + kind;
    for (std::size_t source = 0; source < sides.size(); ++source) {
        const char side = sides[source];
        const std::string name = layout == "cingo" ? std::string("cingo") + (source == 0 ? "L" : "R")
                                                   : layout + "_" + std::to_string(source + 1) + "_h_" + kind;
        const bool is_loudest = side == 'b' || sides.find('b') == std::string::npos;
        const int loud = is_loudest ? peak : 20000;
        set.tables.push_back(spike(name + "L48", samples, side == 'r' ? -loud / 2 : -loud));
        set.tables.push_back(spike(name + "R48", samples, side == 'l' ? loud / 2 : loud));
        if (side == 'c' && kind != "c") set.tables.back().samples = set.tables[set.tables.size() - 2].samples;
    }
    return set;
}

std::vector<TableSet> validSets() {
    std::vector<TableSet> sets;
    sets.push_back(validSet("cingo", "", 13000, "lr", 9597));
    sets.push_back(validSet("5_1", "c", 8544, "lrcblr", 32392));
    sets.push_back(validSet("7_1", "c", 8640, "lrcblrlr", 32392));
    TableSet audio{};
    audio.tables.push_back(spike("dolby441", 6000, 26905));
    sets.push_back(audio);
    const std::array<int, 3> peaks{16805, 14977, 13349};
    for (const auto& [layout, sides] :
         {std::pair{"2", "lr"}, std::pair{"5_1", "lrclr"}, std::pair{"7_1", "lrclrlr"}}) {
        for (std::size_t mode = 0; mode < peaks.size(); ++mode) {
            sets.push_back(validSet(layout, "mode" + std::to_string(mode + 1), 7000, sides, peaks[mode]));
        }
    }
    return sets;
}

class IrgenTableFacts : public testing::Test {
  protected:
    Table& table(const std::string& name) {
        for (TableSet& set : sets_) {
            for (Table& candidate : set.tables) {
                if (candidate.name == name) return candidate;
            }
        }
        throw std::runtime_error("no table " + name);
    }

    std::string complaint() const {
        try {
            checkTableFacts(sets_);
            return "";
        } catch (const UnmetTableFact& reason) {
            return reason.what();
        }
    }

    std::vector<TableSet> sets_ = validSets();
};

TEST_F(IrgenTableFacts, HoldForAll117Tables) {
    EXPECT_EQ(complaint(), "");
    std::size_t tables = 0;
    for (const TableSet& set : sets_) tables += set.tables.size();
    EXPECT_EQ(tables, 117U);
}

TEST_F(IrgenTableFacts, DetectAWrongLength) {
    table("5_1_2_h_mode2R48").samples.push_back(0);
    EXPECT_EQ(complaint(), "5_1_2_h_mode2R48: wrong length");
}

TEST_F(IrgenTableFacts, DetectAWrongName) {
    table("cingoLL48").name = "cingoXX48";
    EXPECT_EQ(complaint(), "cingoXX48: wrong name");
}

TEST_F(IrgenTableFacts, DetectAWrongPeak) {
    table("dolby441").samples[0] = 26906;
    EXPECT_EQ(complaint(), "dolby441: the set's peak is 26906 instead of 26905");
}

TEST_F(IrgenTableFacts, DetectASourceOnTheWrongSide) {
    std::swap(table("7_1_5_h_cL48").samples, table("7_1_5_h_cR48").samples);
    EXPECT_EQ(complaint(), "7_1_5_h_cL48: the source is not on the left");
    std::swap(table("7_1_5_h_cL48").samples, table("7_1_5_h_cR48").samples);
    table("5_1_3_h_cR48").samples[100] = 32000;
    EXPECT_EQ(complaint(), "5_1_3_h_cL48: the source is not in the centre");
}

TEST_F(IrgenTableFacts, DetectUnequalEarsInTheCentreOfAMode) {
    table("7_1_3_h_mode3R48").samples[3000] += 1;
    EXPECT_EQ(complaint(), "7_1_3_h_mode3L48: the two ears differ");
}

TEST_F(IrgenTableFacts, DetectTwoEqualTables) {
    table("7_1_6_h_mode1L48").samples = table("7_1_4_h_mode1L48").samples;
    EXPECT_EQ(complaint(), "7_1_4_h_mode1L48: identical to 7_1_6_h_mode1L48");
}

TEST_F(IrgenTableFacts, DetectAMissingTable) {
    sets_[4].tables.pop_back();
    EXPECT_EQ(complaint(), "2 mode1: wrong number of tables");
    sets_.pop_back();
    EXPECT_EQ(complaint(), "wrong number of sets");
}

}  // namespace
