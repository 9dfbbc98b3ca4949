// The sets of tables: the loudspeakers of each, the room they stand in, and the voicing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "programme_power.h"
#include "response_formats.h"
#include "room.h"

namespace sonivex_irgen {

/** One loudspeaker or a pair that is equalised and levelled together. */
struct LoudspeakerGroup {
    enum class Kind { kFrontPair, kCentre, kLowFrequency, kSurroundPair };
    Kind kind;
    double azimuth_deg;  // left positive; of a pair, that of the left loudspeaker
    std::uint64_t seed;  // of the first loudspeaker's reverberation; the second of a pair has the next
    double direct_to_reverberant_db;  // in the octaves up to 4 kHz; low frequency: over all of them

    /** True if the group has two loudspeakers. */
    bool isPair() const { return kind == Kind::kFrontPair || kind == Kind::kSurroundPair; }
};

/** Design of one set of tables. */
struct LoudspeakerSet {
    std::string name;                       // for reports
    std::vector<std::string> source_names;  // of the tables of each source, without prefix, ear and rate
    sonivex::ResponseFormat format;         // of the tables
    Room room;
    std::vector<LoudspeakerGroup> groups;  // in the order of the sources
    Programme front_programme;
    bool is_centre_equal_in_both_ears;
    double air_db;
    double bass_shelf_db;
    double high_pass_hz;
    /** Largest magnitude of the set's tables. Without a value the tables have the level of a dry channel, but
     *  for the low-frequency source. */
    std::optional<double> largest_magnitude;
};

/** All sets but the Audio stage, in the order of the tables: cingo; Bingo 5.1 and 7.1; modes 1 to 3 for two
 *  channels, for 5.1 and for 7.1. */
std::vector<LoudspeakerSet> loudspeakerSets();

}  // namespace sonivex_irgen
