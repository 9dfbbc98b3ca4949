#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace sonivex_tool {

// Figures of one loudspeaker as both ears hear it: how much of it is room, and from which side it comes.
//
//   direct sound   the first 2.5 ms of each ear's response from that ear's arrival
//   room           everything after that
//   early sound    the first 80 ms of both responses from the earlier arrival
//
// The parts are cut first and measured in octaves afterwards. A filter before the cut would ring across it.
// Octaves have sharp edges, half an octave on either side of their centre. A figure is missing where one of
// the energies that it compares is zero, so none is infinite.

inline constexpr std::array<int, 8> kOctaves_hz{125, 250, 500, 1000, 2000, 4000, 8000, 16000};

/** Returns the octave's centre as a label: "125", "1k". */
std::string octaveName(int centre_hz);

/** Level of the left ear over the right one; negative if the right ear is louder. */
struct LevelDifference {
    std::optional<double> direct_db;  // of the direct sound
    std::optional<double> whole_db;   // of the whole responses
};

/** The figures of one octave. */
struct OctaveMeasures {
    /** Energy of the direct sound over that of the room, both ears together. */
    std::optional<double> direct_to_reverberant_db;
    LevelDifference level_difference;
    /** Largest normalised cross-correlation of the early sound within 1 ms either way, -1 to 1, read in steps
     *  of an eighth of a sample. */
    std::optional<double> early_correlation;
};

/** The figures of one loudspeaker. */
struct SourceMeasures {
    /** Time by which the direct sound reaches the left ear earlier; negative: the right ear leads. It is the
     *  lag of the largest cross-correlation within 1 ms, in steps of an eighth of a sample, for a sound with
     *  the spectrum of speech below 1.5 kHz. Above, hearing does not follow the waveform. */
    std::optional<double> delay_us;
    LevelDifference level_difference;  // over all frequencies
    std::array<OctaveMeasures, kOctaves_hz.size()> octaves;
};

/** Measures a loudspeaker's responses, given as gains, at both ears. */
SourceMeasures measureSource(std::span<const double> left, std::span<const double> right, int rate_hz);

/** Measures the ratios of direct to reverberant sound alone: of ears that share a response, or that hear
 *  different channels. All figures that compare the ears are missing. */
SourceMeasures measureRatios(std::span<const double> left, std::span<const double> right, int rate_hz);

/** Returns the energy of one ear's direct sound. */
double directEnergy(std::span<const double> gains, int rate_hz);

}  // namespace sonivex_tool
