#include "table_facts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "made_tables.h"
#include "synthetic_head.h"

namespace {

using namespace sonivex_irgen;

class TableFacts : public testing::Test {
  protected:
    void SetUp() override {
        SONIVEX_NEED_PACKAGED_HEAD();
        mSets = irgen_test::madeTables();
    }

    Table& table(const std::string& name) {
        for (TableSet& set : mSets) {
            for (Table& candidate : set.tables) {
                if (candidate.name == name) return candidate;
            }
        }
        throw std::runtime_error("no table " + name);
    }

    std::string complaint() const {
        try {
            checkTableFacts(mSets);
            return "";
        } catch (const UnmetTableFact& reason) {
            return reason.what();
        }
    }

    std::vector<TableSet> mSets;
};

TEST_F(TableFacts, HoldForTheTablesAsMade) {
    EXPECT_EQ(complaint(), "");
    std::size_t tables = 0;
    for (const TableSet& set : mSets) tables += set.tables.size();
    EXPECT_EQ(tables, 117U);
}

TEST_F(TableFacts, NoticeAWrongLength) {
    table("5_1_2_h_mode2R48").samples.push_back(0);
    EXPECT_EQ(complaint(), "5_1_2_h_mode2R48: wrong length");
}

TEST_F(TableFacts, NoticeAWrongName) {
    table("cingoLL48").name = "cingoXX48";
    EXPECT_EQ(complaint(), "cingoXX48: wrong name");
}

TEST_F(TableFacts, NoticeAWrongPeak) {
    table("dolby441").samples[0] = 26906;
    EXPECT_EQ(complaint(), "dolby441: the set's peak is 26906 instead of 26905");
}

TEST_F(TableFacts, NoticeASourceOnTheWrongSide) {
    std::swap(table("7_1_5_h_cL48").samples, table("7_1_5_h_cR48").samples);
    EXPECT_EQ(complaint(), "7_1_5_h_cL48: the source is not on the left");
    std::swap(table("7_1_5_h_cL48").samples, table("7_1_5_h_cR48").samples);
    table("5_1_3_h_cR48").samples[100] = 32000;
    EXPECT_EQ(complaint(), "5_1_3_h_cL48: the source is not in the centre");
}

TEST_F(TableFacts, NoticeUnequalEarsInTheCentreOfAMode) {
    table("7_1_3_h_mode3R48").samples[3000] += 1;
    EXPECT_EQ(complaint(), "7_1_3_h_mode3L48: the ears differ");
}

TEST_F(TableFacts, NoticeTwoEqualTables) {
    table("7_1_6_h_mode1L48").samples = table("7_1_4_h_mode1L48").samples;
    EXPECT_EQ(complaint(), "7_1_4_h_mode1L48: the same as 7_1_6_h_mode1L48");
}

TEST_F(TableFacts, NoticeAMissingTable) {
    mSets[4].tables.pop_back();
    EXPECT_EQ(complaint(), "2 mode1: wrong number of tables");
    mSets.pop_back();
    EXPECT_EQ(complaint(), "wrong number of sets");
}

}  // namespace
