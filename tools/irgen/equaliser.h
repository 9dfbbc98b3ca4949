// One filter for all tables of a group, which makes the programme's spectrum flat.
//
// The same filter for both ears leaves the differences between them, and so the direction, as they are
// (Merimaa 2009). repeat: measure the programme's power, smooth it, add what is missing to the filter, filter
// the parts, mix
#pragma once

#include <vector>

#include "programme_power.h"
#include "source_components.h"

namespace sonivex_irgen {

struct EqualiserPlan {
    Programme programme;
    double air_db;             // rise of the target from 11 to 14 kHz
    double smoothing_octaves;  // width of the average
    int rounds;                // of measuring and correcting
    double strength;           // part of the error that a round corrects
    double direct_to_reverberant_db;
};

struct EqualisedGroup {
    std::vector<EarSignals> sources;  // in the group's order, equalised and mixed
    double largest_gain_db;           // of the filter, by magnitude
};

/** The air shelf: 0 dB up to 11 kHz, air_db from 14 kHz. */
double airShelf_db(double frequency_hz, double air_db);

EqualisedGroup equaliseGroup(const std::vector<SourceComponents>& group, const EqualiserPlan& plan);

}  // namespace sonivex_irgen
