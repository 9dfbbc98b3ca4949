// What the whole computation shares.
#pragma once

#include <cstddef>

namespace sonivex_irgen {

inline constexpr double kSpeedOfSound_m_s = 343.0;
inline constexpr double kRate_hz = 48000.0;

/** Sample of every table at which a sound from a loudspeaker reaches the middle of the head. It leaves room
 * for the nearer ear. */
inline constexpr double kOrigin_samples = 40.0;

/** Head spectra: bins 0 to 1024 of 2048 points at kRate_hz. */
inline constexpr std::size_t kHeadPoints = 2048;
inline constexpr std::size_t kHeadBins = kHeadPoints / 2 + 1;

/** Energies of direct sound and room are compared above this frequency. */
inline constexpr double kRatioFrom_hz = 300.0;

inline constexpr std::size_t kEars = 2;  // 0 left, 1 right

}  // namespace sonivex_irgen
