#include "table_facts.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

namespace sonivex_irgen {
namespace {

// Expected names, length and peak of a set. `sides` has one letter for each source: l left, r right,
// c centre, e centre with equal ears, b low-frequency channel.
struct ExpectedSet {
    std::string_view first_table;
    std::string_view last_table;
    std::size_t samples;
    std::string_view sides;
    int largest_magnitude;
};

constexpr std::array<ExpectedSet, 13> kExpected{{
    {"cingoLL48", "cingoRR48", 13000, "lr", 9597},
    {"5_1_1_h_cL48", "5_1_6_h_cR48", 8544, "lrcblr", 32392},
    {"7_1_1_h_cL48", "7_1_8_h_cR48", 8640, "lrcblrlr", 32392},
    {"dolby441", "dolby441", 6000, "", 26905},
    {"2_1_h_mode1L48", "2_2_h_mode1R48", 7000, "lr", 16805},
    {"2_1_h_mode2L48", "2_2_h_mode2R48", 7000, "lr", 14977},
    {"2_1_h_mode3L48", "2_2_h_mode3R48", 7000, "lr", 13349},
    {"5_1_1_h_mode1L48", "5_1_5_h_mode1R48", 7000, "lrelr", 16805},
    {"5_1_1_h_mode2L48", "5_1_5_h_mode2R48", 7000, "lrelr", 14977},
    {"5_1_1_h_mode3L48", "5_1_5_h_mode3R48", 7000, "lrelr", 13349},
    {"7_1_1_h_mode1L48", "7_1_7_h_mode1R48", 7000, "lrelrlr", 16805},
    {"7_1_1_h_mode2L48", "7_1_7_h_mode2R48", 7000, "lrelrlr", 14977},
    {"7_1_1_h_mode3L48", "7_1_7_h_mode3R48", 7000, "lrelrlr", 13349},
}};

constexpr double kCentreSpread = 1.3;  // limit of the ratio of the two peaks

void require(bool is_met, const Table& table, const std::string& reason) {
    if (!is_met) throw UnmetTableFact(table.name + ": " + reason);
}

int peakOf(const Table& table) {
    int peak = 0;
    for (const std::int16_t sample : table.samples) peak = std::max(peak, std::abs(int{sample}));
    return peak;
}

void checkSide(char side, const Table& left, const Table& right) {
    const double left_peak = peakOf(left);
    const double right_peak = peakOf(right);
    const bool is_central = left_peak < kCentreSpread * right_peak && right_peak < kCentreSpread * left_peak;
    if (side == 'l') require(!is_central && left_peak > right_peak, left, "the source is not on the left");
    if (side == 'r') require(!is_central && right_peak > left_peak, left, "the source is not on the right");
    if (side == 'c' || side == 'e' || side == 'b')
        require(is_central, left, "the source is not in the centre");
    if (side == 'e') require(left.samples == right.samples, left, "the two ears differ");
}

void checkSet(const TableSet& set, const ExpectedSet& expected) {
    const std::size_t count = expected.sides.empty() ? 1 : 2 * expected.sides.size();
    if (set.tables.size() != count) throw UnmetTableFact(set.name + ": wrong number of tables");
    require(set.tables.front().name == expected.first_table, set.tables.front(), "wrong name");
    require(set.tables.back().name == expected.last_table, set.tables.back(), "wrong name");

    const Table* loudest = set.tables.data();
    for (const Table& table : set.tables) {
        require(table.samples.size() == expected.samples, table, "wrong length");
        if (peakOf(table) > peakOf(*loudest)) loudest = &table;
    }
    require(peakOf(*loudest) == expected.largest_magnitude, *loudest,
            "the set's peak is " + std::to_string(peakOf(*loudest)) + " instead of " +
                std::to_string(expected.largest_magnitude));
    for (std::size_t source = 0; source < expected.sides.size(); ++source) {
        const Table& left = set.tables[2 * source];
        checkSide(expected.sides[source], left, set.tables[2 * source + 1]);
        if (expected.sides[source] == 'b') {
            require(peakOf(left) == expected.largest_magnitude, left,
                    "the low-frequency source is not the loudest");
        }
    }
}

bool isCentreOfMode(const Table& table) {
    return table.name.find("_3_h_mode") != std::string::npos;
}

}  // namespace

void checkTableFacts(const std::vector<TableSet>& sets) {
    if (sets.size() != kExpected.size()) throw UnmetTableFact("wrong number of sets");
    std::vector<const Table*> all;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        checkSet(sets[i], kExpected[i]);
        for (const Table& table : sets[i].tables) all.push_back(&table);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = i + 1; j < all.size(); ++j) {
            // The two ears of a mode's centre are equal by design; they are neighbours in the list.
            if (j == i + 1 && isCentreOfMode(*all[i]) && isCentreOfMode(*all[j])) continue;
            require(all[i]->samples != all[j]->samples, *all[i], "identical to " + all[j]->name);
        }
    }
}

}  // namespace sonivex_irgen
