#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "directional_transfer.h"
#include "interaural_delay.h"
#include "sha256.h"
#include "table_writer.h"
#include "tables.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

std::string fileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(IrgenTables, MatchTheCommittedTablesByteForByte) {
    SONIVEX_NEED_PACKAGED_HEAD();
    const std::string committed = fileBytes(SONIVEX_COMMITTED_TABLES);
    ASSERT_FALSE(committed.empty());
    const HeadMeasurements& measurements = *irgen_test::packagedHead();
    const TableOrigin origin{sha256(fileBytes(SONIVEX_DEFAULT_SOFA)), fitHeadRadius_m(measurements)};
    const HeadModel head(directionalTransfers(measurements), origin.head_radius_m);
    std::istringstream made(tableSource(makeTableSets(head), origin));
    std::istringstream expected(committed);
    std::string made_line;
    std::string expected_line;
    for (int line = 1; std::getline(expected, expected_line); ++line) {
        ASSERT_TRUE(std::getline(made, made_line)) << "line " << line;
        ASSERT_EQ(made_line, expected_line) << "line " << line;
    }
    EXPECT_FALSE(std::getline(made, made_line));
}

}  // namespace
