#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "speech_ratio.h"

namespace sonivex_tool {

// Aligns the output of an effect with the mix of speech and background that went in. An encoder in between
// may have moved it:
//
//   1. Take the loudest stretch of the mix, up to 10 s, and the same stretch of the output.
//   2. The delay finder gives the lag at which they match, up to half a second either way.
//   3. The lag counts if it leaves less of the output unexplained than no lag does.

/** A comparison after alignment. */
struct AlignedSpeech {
    int64_t shift_frames = 0;  // by how many frames the output lags the mix; negative if it leads
    SpeechRatio ratio;         // of the frames that all three sounds have after alignment

    /** Returns the smaller of the speech's and the background's share of the output's power. */
    double weakerShare() const;
    /** Returns whether speech and background explain enough of the output for the ratio to be meaningful. */
    bool isExplained() const;
};

/** Aligns an output with the two sounds that were mixed for its input, and compares it with them.
 *
 *  All three are interleaved stereo and share one scale, which may be any. The shortest of the three sets the
 *  length. The shift is 0 if none stands out (steady tones, unrelated sounds), or if none explains more.
 *  @param rate_hz at least 500
 *  @throw std::bad_alloc */
AlignedSpeech alignAndCompareSpeech(std::span<const float> speech, std::span<const float> background,
                                    std::span<const float> output, int rate_hz);

}  // namespace sonivex_tool
