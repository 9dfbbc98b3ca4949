// All tables of integers, in their order: cingo, Bingo 5.1 and 7.1, Audio, modes of two channels, 5.1
// and 7.1.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "head_model.h"

namespace sonivex_irgen {

struct Table {
    std::string name;  // without prefix: cingoLL48, 5_1_1_h_cL48, dolby441
    std::vector<std::int16_t> samples;
};

/** A set of tables and what became of it. */
struct TableSet {
    std::string name;
    std::vector<Table> tables;  // left and right ear of every source
    double scale;               // integer of a gain of 1 in the design
    double peak;                // largest magnitude
    double loudness_change_db;  // of the programme in front, by the filter; without the Audio stage
    double largest_gain_db;     // of the equalisers
};

/** Compute everything. Throws UnmetTableFact. */
std::vector<TableSet> makeTableSets(const HeadModel& head);

}  // namespace sonivex_irgen
