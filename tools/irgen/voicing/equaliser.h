// Equaliser: one filter for all tables of a group, which makes the spectrum of a typical programme flat.
//
// Both ears share the filter, so the interaural differences, and with them the direction, stay unchanged
// (Merimaa 2009).
//
//   repeat plan.rounds times:
//       level_db   = power of the programme at the ears, smoothed, relative to 400 Hz - 2.5 kHz
//       filter_db += strength * (target_db - level_db), limited to +-12 dB
//       group      = mix of the original components, each filtered with the minimum-phase filter
//
// The target is flat but for the air shelf.
#pragma once

#include <vector>

#include "programme_power.h"
#include "source_components.h"

namespace sonivex_irgen {

/** Settings of the equaliser for one group. */
struct EqualiserPlan {
    Programme programme;
    double air_db;                    // rise of the target from 11 to 14 kHz
    double smoothing_octaves;         // full width of the smoothing window
    int rounds;                       // measurements, each followed by a correction
    double strength;                  // fraction of the error that one round corrects
    double direct_to_reverberant_db;  // see wantedRatio_db; of the sum at each ear for Programme::kOwnChannel
};

/** A group after equalisation. */
struct EqualisedGroup {
    std::vector<EarSignals> sources;  // in the group's order, equalised and mixed
    double largest_gain_db;           // largest magnitude of the filter's gain in dB
};

/** Air shelf of the target: 0 dB up to 11 kHz, rising smoothly to air_db at 14 kHz and constant above. */
double airShelf_db(double frequency_hz, double air_db);

/** Equalises all loudspeakers of a group with one filter and mixes their components. */
EqualisedGroup equaliseGroup(const std::vector<SourceComponents>& group, const EqualiserPlan& plan);

}  // namespace sonivex_irgen
