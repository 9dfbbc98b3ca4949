// The impulse responses as gains, with the direction and the room of each source.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "compiled_tables.h"
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

/** The same of other tables.
 *  @param tables sets in the order of compiledSets() */
Responses responsesOf(std::span<const TableSet> tables, const Table& audio_stage);

/** A set as it is heard: responses of the modes are convolved with the Audio stage at 48 kHz, other sets are
 *  unchanged. */
ResponseSet withAudioStage(const ResponseSet& set, const Signal& audio_stage);

/** The set reduced to its front pair. */
ResponseSet frontPair(const ResponseSet& set);

/** Sum of the front pair's responses at each ear: a mono programme. In a set of feedsEachEarItsOwnChannel()
 *  the sum is also the response of an ear to its own channel. */
Ears sumOfFrontPair(const ResponseSet& set);

/** True for the two-channel modes: each ear hears only its own channel, through the responses of both
 *  loudspeakers at that ear. A single loudspeaker is never heard by both ears there. */
bool feedsEachEarItsOwnChannel(const ResponseSet& set);

/** True for a source in the middle, whose paths to both ears are equal. */
bool isCentral(const Source& source);

/** Pairs of sources that mirror each other, as indices into set.sources, left source first. */
std::vector<std::array<std::size_t, 2>> mirrorPairs(const ResponseSet& set);

}  // namespace response_quality
