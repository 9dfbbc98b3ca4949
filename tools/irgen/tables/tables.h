// All tables of integers, in their order: cingo, Bingo 5.1 and 7.1, Audio, then the modes for two channels,
// for 5.1 and for 7.1.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "head_model.h"

namespace sonivex_irgen {

/** One impulse response as integers. */
struct Table {
    std::string name;  // without prefix: cingoLL48, 5_1_1_h_cL48, dolby441
    std::vector<std::int16_t> samples;
};

/** A set of tables, with the figures for the report. */
struct TableSet {
    std::string name;
    std::vector<Table> tables;  // left and right ear of every source
    double scale;               // integer that stands for a gain of 1 in the design
    double peak;                // largest magnitude
    double loudness_change_db;  // of the programme in front, through these tables alone
    double largest_gain_db;     // of the equalisers
};

/** Computes all sets of tables. Throws UnmetTableFact if a value does not fit in 16 bits. */
std::vector<TableSet> makeTableSets(const HeadModel& head);

}  // namespace sonivex_irgen
