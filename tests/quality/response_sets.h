// The impulse responses as gains, with what each source is meant to be: where it stands and in which room.
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

/** A loudspeaker as both ears hear it. */
struct Source {
    std::string name;
    Role role = Role::kFront;
    double azimuth_deg = 0.0;  // to the left positive
    double direct_to_reverberant_db = 0.0;
    Ears ears;
};

struct ResponseSet {
    std::string name;
    Kind kind = Kind::kCingo;
    bool has_two_channels = false;
    int mode = 0;                       // 1 to 3, 0 if the set has none
    double reverberation_time_s = 0.0;  // of its room
    double faded_part = 0.0;            // of its length, at the end
    std::vector<Source> sources;
};

struct Responses {
    std::vector<ResponseSet> sets;
    Signal audio_stage;
};

/** The tables as compiled, divided by the divisors that the effect divides them by. */
Responses compiledResponses();

/** A set as it is heard: the modes with the Audio stage behind them, at their own rate. */
ResponseSet withAudioStage(const ResponseSet& set, const Signal& audio_stage);

/** The set without all but its front pair. */
ResponseSet frontPair(const ResponseSet& set);

/** Is the source in the middle, with the same path to both ears? */
bool isCentral(const Source& source);

/** Pairs of sources that mirror each other: places in set.sources, left one first. */
std::vector<std::array<std::size_t, 2>> mirrorPairs(const ResponseSet& set);

}  // namespace response_quality
