#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace sonivex_tool {

// Measures the level of speech against its background before and after an effect that changes both over time
// and frequency. The speech and the background that were mixed must be known.
//
//   speech, background and output are cut into third octaves from 200 to 4000 Hz and segments of 100 ms;
//   in each tile, for each channel:   output ~ a * speech + b * background   (least squares)
//   before = sum of speech^2 / sum of background^2
//   after  = sum of (a * speech)^2 / sum of (b * background)^2
//
// The sums run over the tiles of the segments that contain speech. A gain that an effect applies to both
// alike cancels out.

/** The level of speech against its background in the band of speech. All members are 0 if the speech or the
 *  background is silent, if either is missing from the output, or if a sample is NaN or infinite. */
struct SpeechRatio {
    std::size_t segments = 0;  // segments that contain speech
    double before_db = 0.0;    // power of the speech over that of the background in the mix
    double after_db = 0.0;     // the same in the output
    /** Share of the output's power, 0 to 1, that neither speech nor background explains at any gain. Its
     *  causes are misalignment, distortion, and gains that change within a tile. */
    double unexplained = 0.0;
    double speech_share = 0.0;      // power of the speech in the output, as a share of the output's power
    double background_share = 0.0;  // the same for the background

    /** Returns how far the speech rose above its background, in dB. */
    double rise_db() const { return after_db - before_db; }
};

/** Compares an output with the two sounds that were mixed for its input; the mix is speech + background.
 *
 *  All three are interleaved stereo, start at the same instant (the effect's delay removed) and share one
 *  scale, which may be any. The shortest of the three sets the length.
 *  @param rate_hz at least 500; bands centred above 0.45 of the rate are left out
 *  @throw std::bad_alloc */
SpeechRatio compareSpeech(std::span<const float> speech, std::span<const float> background,
                          std::span<const float> output, int rate_hz);
/** The same for 16-bit samples. */
SpeechRatio compareSpeech(std::span<const std::int16_t> speech, std::span<const std::int16_t> background,
                          std::span<const std::int16_t> output, int rate_hz);

/** Returns the power of speech over that of its background in dB when both are known separately. It covers
 *  the same band, over the segments in which `speaker` is active, so the parts of two mixes can be compared.
 *  @param speaker decides which segments contain speech; usually the speech before an effect
 *  @return 0 if one of the three is silent or a sample is NaN or infinite
 *  @throw std::bad_alloc */
double ratioOfParts_db(std::span<const float> speech, std::span<const float> background,
                       std::span<const float> speaker, int rate_hz);

}  // namespace sonivex_tool
