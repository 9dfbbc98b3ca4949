// The azimuths at which loudspeakers stand, left positive, by ITU-R BS.775.
#pragma once

namespace sonivex_irgen {

inline constexpr double kFront_deg = 30.0;
inline constexpr double kCentre_deg = 0.0;
inline constexpr double kSurround_deg = 110.0;
inline constexpr double kSide_deg = 90.0;
inline constexpr double kBack_deg = 140.0;

inline constexpr double kLoudspeakerAzimuths_deg[] = {
    kCentre_deg,   kFront_deg,     -kFront_deg, kSide_deg,  -kSide_deg,
    kSurround_deg, -kSurround_deg, kBack_deg,   -kBack_deg,
};

}  // namespace sonivex_irgen
