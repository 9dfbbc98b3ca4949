#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace sonivex_tool {

// How loud speech is against its background, before and after an effect that changes both over time and
// frequency, when what was mixed is known.
//
//   speech, background and output are cut into third octaves from 200 to 4000 Hz and segments of 100 ms;
//   in each tile, for each channel:   output ~ a * speech + b * background   (least squares)
//   before = sum of speech^2 / sum of background^2
//   after  = sum of (a * speech)^2 / sum of (b * background)^2
//
// over the tiles of those segments in which somebody speaks. What an effect does to both alike cancels out.

/** Speech against background in the band of speech. Without speech, background or either in the output, or
 * with samples that are no numbers, all is 0.
 */
struct SpeechRatio {
    std::size_t segments = 0;  // in which somebody speaks
    double before_db = 0.0;    // power of speech over that of the background in the mix
    double after_db = 0.0;     // the same in the output
    /** Share of the output's power, 0 to 1, that is neither of the two at any level: misalignment,
     * distortion, change of gain within a tile. */
    double unexplained = 0.0;

    double rise_db() const { return after_db - before_db; }
};

/** Compare an output with the two sounds that were mixed for its input.
 *
 *  All three are interleaved stereo, start at the same instant (an effect's delay taken out) and may have any
 *  common scale; the shortest one counts. The mix itself is speech + background.
 *  @param rate_hz from 500; bands above 0.45 of it are left out
 *  @throw std::bad_alloc */
SpeechRatio compareSpeech(std::span<const float> speech, std::span<const float> background,
                          std::span<const float> output, int rate_hz);
SpeechRatio compareSpeech(std::span<const std::int16_t> speech, std::span<const std::int16_t> background,
                          std::span<const std::int16_t> output, int rate_hz);

/** Power of speech over that of its background, in dB, where both are known by themselves: in the same band,
 * over the segments in which `speaker` is active, so that it can be compared with that of the parts of
 * another mix.
 *  @param speaker what decides when somebody speaks; usually the speech before an effect
 *  @return 0 without any of the three, or with samples that are no numbers
 *  @throw std::bad_alloc */
double ratioOfParts_db(std::span<const float> speech, std::span<const float> background,
                       std::span<const float> speaker, int rate_hz);

}  // namespace sonivex_tool
