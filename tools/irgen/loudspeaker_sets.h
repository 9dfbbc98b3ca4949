// The sets of tables: which loudspeakers, in which room, voiced how.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "programme_power.h"
#include "room.h"

namespace sonivex_irgen {

/** Loudspeakers that are equalised and levelled together, in the order of their sources. */
struct LoudspeakerGroup {
    enum class Kind { kFrontPair, kCentre, kLowFrequency, kSurroundPair };
    Kind kind;
    double azimuth_deg;  // of the left one of a pair
    std::uint64_t seed;  // of the first one's reverberation; a pair's second has the next
    double direct_to_reverberant_db;

    bool isPair() const { return kind == Kind::kFrontPair || kind == Kind::kSurroundPair; }
};

struct LoudspeakerSet {
    std::string name;                       // for reports
    std::vector<std::string> source_names;  // of each source, without prefix, ear and rate
    std::size_t samples;
    Room room;
    std::vector<LoudspeakerGroup> groups;
    Programme front_programme;
    bool is_centre_equal_in_both_ears;
    double air_db;
    double bass_shelf_db;
    double high_pass_hz;
    double faded_part;  // of the table's end
    /** Largest magnitude of the set's tables; without one the tables are at the level of a dry channel. */
    std::optional<double> largest_magnitude;
    double divisor;  // the stored integer of a gain of 1
};

/** All sets but the Audio pair: cingo; Bingo 5.1 and 7.1; modes 1 to 3 of two channels, 5.1 and 7.1. */
std::vector<LoudspeakerSet> loudspeakerSets();

/** Every azimuth at which a loudspeaker stands, left positive. */
std::vector<double> loudspeakerAzimuths_deg();

}  // namespace sonivex_irgen
