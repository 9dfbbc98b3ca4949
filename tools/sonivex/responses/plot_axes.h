#pragma once

#include "axis.h"

namespace sonivex_tool {

// The axes of a picture of responses. Except for the length in time, their ranges are the same for all
// responses: pictures of two loudspeakers, or of one before and after a change, can be laid side by side. The
// ranges hold every compiled response, and a test checks it.

inline constexpr double kImpulseShown_ms = 30.0;
inline constexpr double kLowestGain = -0.75;
inline constexpr double kHighestGain = 1.75;
inline constexpr double kLowestMagnitude_db = -40.0;
inline constexpr double kHighestMagnitude_db = 10.0;
inline constexpr double kHighestEnvelope_db = 10.0;
inline constexpr double kLowestOctaveLevel_db = -30.0;
inline constexpr double kHighestOctaveLevel_db = 40.0;

sonivex_plotting::Axis impulseTimeAxis();
sonivex_plotting::Axis timeAxis(double length_ms);
sonivex_plotting::Axis gainAxis();
sonivex_plotting::Axis envelopeAxis();
sonivex_plotting::Axis frequencyAxis();
sonivex_plotting::Axis magnitudeAxis();
sonivex_plotting::Axis decayAxis();
sonivex_plotting::Axis octaveAxis();
sonivex_plotting::Axis octaveLevelAxis();
sonivex_plotting::Axis correlationAxis();

}  // namespace sonivex_tool
