// Constants that the whole design shares.
#pragma once

#include <cstddef>

namespace sonivex_irgen {

inline constexpr double kSpeedOfSound_m_s = 343.0;

/** Sample rate of the design; the Audio stage alone has another one. */
inline constexpr double kRate_hz = 48000.0;

/** Sample of every table at which the direct sound reaches the centre of the head. The nearer ear hears it
 *  earlier; the samples before the origin leave room for that. */
inline constexpr double kOrigin_samples = 40.0;

/** Points of the transform behind a head spectrum, at kRate_hz. */
inline constexpr std::size_t kHeadPoints = 2048;

/** Bins of a head spectrum: 0 to 1024. */
inline constexpr std::size_t kHeadBins = kHeadPoints / 2 + 1;

inline constexpr std::size_t kEars = 2;  // 0 left, 1 right

}  // namespace sonivex_irgen
