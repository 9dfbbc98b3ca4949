/* The sets of tables: which loudspeakers, in which room, voiced how. */
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
    double azimuth_deg;  ///< of the left one of a pair
    std::uint64_t seed;  ///< of the first one's reverberation; a pair's second has the next
    double directToReverberant_db;

    bool isPair() const { return kind == Kind::kFrontPair || kind == Kind::kSurroundPair; }
};

struct LoudspeakerSet {
    std::string name;                      ///< for reports
    std::vector<std::string> sourceNames;  ///< of each source, without prefix, ear and rate
    std::size_t samples;
    Room room;
    std::vector<LoudspeakerGroup> groups;
    Programme frontProgramme;
    bool isCentreEqualInBothEars;
    double air_db;
    double bassShelf_db;
    double highPass_hz;
    double fadedPart;  ///< of the table's end
    /** Largest magnitude of the set's tables; without one the tables are at the level of a dry channel. */
    std::optional<double> largestMagnitude;
    double divisor;  ///< the stored integer of a gain of 1
};

/** All sets but the Audio pair: cingo; Bingo 5.1 and 7.1; modes 1 to 3 of two channels, 5.1 and 7.1. */
std::vector<LoudspeakerSet> loudspeakerSets();

/** Every azimuth at which a loudspeaker stands, left positive. */
std::vector<double> loudspeakerAzimuths_deg();

}  // namespace sonivex_irgen
