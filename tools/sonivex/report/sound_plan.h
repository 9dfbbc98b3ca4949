#pragma once

#include <cstdint>
#include <optional>

namespace sonivex_tool {

// A page holds the sound of every version as Opus. All of them together take at most kSoundBudget_bytes, and
// the Ogg container up to 5 % more, so that a page stays below 5 MB whatever the file's length:
//
//   short sounds      kHighestBitRate
//   longer ones       the bit rate that fits the budget, down to kLowestBitRate
//   longer still      an excerpt from the middle, at kExcerptBitRate

/** Bytes of encoded sound in a page, before they become text. */
inline constexpr int64_t kSoundBudget_bytes = 2900000;
inline constexpr int kHighestBitRate = 128000;  // bit/s, as the next two
inline constexpr int kLowestBitRate = 30000;
inline constexpr int kExcerptBitRate = 64000;

/** The stretch of the sound that a user wants to hear. */
struct WantedStretch {
    std::optional<double> start_s = {};
    std::optional<double> length_s = {};
};

/** The sound in a page. */
struct SoundPlan {
    double start_s = 0.0;
    double length_s = 0.0;
    bool is_excerpt = false;
    int rate_bps = kHighestBitRate;  // of each version
};

/** Plans the sound of a page.
 *  @param length_s of the whole sound
 *  @param versions number of versions, the original included
 *  @param wanted cut to the sound; a stretch that begins after its end becomes empty at its end */
SoundPlan planSound(double length_s, int versions, const WantedStretch& wanted);

}  // namespace sonivex_tool
