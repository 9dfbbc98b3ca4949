#pragma once

#include <optional>
#include <span>

namespace sonivex_tool {

// Estimates how far to the side a sound on headphones is heard, by a simple binaural model. It divides the
// sound into third octaves from 160 Hz to 8 kHz, which are about as wide as the bands of hearing.
//
//   by delay  below 1.5 kHz: the angle at which the delays of a rigid sphere (rigid_sphere.h) align the ears
//             best, max over angles of  sum over bands b of w_b * correlation_b(delay of the sphere)
//   by level  above 1.5 kHz: the angle at which the level differences of the sphere fit best,
//             min over angles of  sum over bands b of w_b * (difference_b - difference of the sphere)^2;
//             of all angles that fit at most 1 dB (RMS) worse, the one nearest to that by delay
//   angle     mean of both, weighted by the sum of w_b of their bands
//
// w_b is the importance of the band for the understanding of speech (ANSI S3.5-1997, table 3). That hearing
// uses delays at low frequencies and levels at high ones is Rayleigh's duplex theory (Phil. Mag. 13, 1907).
// That the image lies at a weighted mean of what both cues say is the position variable of Stern & Colburn
// (JASA 64, 1978).
//
// The levels of a sound from the side fit two angles, one near 30 degrees and one near 90, because sound
// bends round the head from all sides. This holds for measured heads as for a sphere.
//
// Limits: only the lateral angle is estimated, so 110 and 70 degrees are one, and front and back are not told
// apart. The sound is taken as a whole: hearing gives more weight to onsets, before a room answers. A head is
// not a sphere. If the cues disagree, their mean may be an angle at which nobody hears the sound: listeners
// follow the delay if low frequencies are present (Wightman & Kistler, JASA 91, 1992).

/** Angles to the plane between the ears, -90 to 90 degrees, positive to the left. */
struct LateralAngle {
    double by_delay_deg = 0.0;
    double by_level_deg = 0.0;
    /** The first and the last angle whose levels fit at most 1 dB worse than the best. Angles between them
     *  need not fit. */
    double lowest_by_level_deg = 0.0;
    double highest_by_level_deg = 0.0;
    double angle_deg = 0.0;  // the weighted mean of by_delay_deg and by_level_deg
    /** Correlation of the ears below 1.5 kHz at the angle by delay, -1 to 1. A dry sound has 1. The smaller
     *  it is, the more of the sound comes from elsewhere, and the broader the image. */
    double clarity = 0.0;
};

/** Estimates from how far to the side a sound is heard.
 *  @param left, right the same number of samples each
 *  @param rate_hz at least 8000; bands beyond 0.45 of it are left out
 *  @return nothing if too little of the sound lies in the bands, if it is at one ear alone, if the ears
 *          are too unlike for a delay (clarity below 0.3) or in opposite phase, or if a sample is not
 *          finite. A band counts within 50 dB of the whole sound; below 1.5 kHz the ears must also lie
 *          within 40 dB. The bands that count must have half of all weight, and some must lie on either side
 *          of 1.5 kHz.
 *  @throw std::bad_alloc */
std::optional<LateralAngle> lateralAngle(std::span<const double> left, std::span<const double> right,
                                         int rate_hz);

}  // namespace sonivex_tool
