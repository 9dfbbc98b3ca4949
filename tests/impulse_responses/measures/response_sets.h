// The impulse responses as gains, with the design of each source: its direction and its room.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "spectrum.h"

namespace response_quality {

inline constexpr double kRate_hz = 48000.0;       // of every set
inline constexpr double kAudioRate_hz = 44100.0;  // of the Audio stage alone
inline constexpr double kSpeedOfSound_m_s = 343.0;

enum class Role { kFront, kCentre, kLowFrequency, kSurround };
enum class Kind { kCingo, kBingo, kMode };

using Ears = std::array<Signal, 2>;  // left, right

/** One loudspeaker as both ears hear it. */
struct Source {
    std::string name;
    Role role = Role::kFront;
    double azimuth_deg = 0.0;  // left positive
    double direct_to_reverberant_db = 0.0;
    Ears ears;
};

/** Responses of one layout in one room. */
struct ResponseSet {
    std::string name;
    Kind kind = Kind::kCingo;
    bool has_two_channels = false;
    int mode = 0;                       // 1 to 3; 0 if the set is not of a mode
    double reverberation_time_s = 0.0;  // of its room
    double faded_part = 0.0;            // fraction of the length that fades out, at the end
    std::vector<Source> sources;
};

/** All sets and the Audio stage. */
struct Responses {
    std::vector<ResponseSet> sets;
    Signal audio_stage;
};

/** The compiled tables, each divided by the divisor that the effect uses. */
Responses compiledResponses();

/** A set as it is heard: responses of the modes are convolved with the Audio stage at 48 kHz, other sets are
 *  unchanged. */
ResponseSet withAudioStage(const ResponseSet& set, const Signal& audio_stage);

/** The set reduced to its front pair. */
ResponseSet frontPair(const ResponseSet& set);

/** True for a source in the middle, whose paths to both ears are equal. */
bool isCentral(const Source& source);

/** Pairs of sources that mirror each other, as indices into set.sources, left source first. */
std::vector<std::array<std::size_t, 2>> mirrorPairs(const ResponseSet& set);

}  // namespace response_quality
