// Measured free-field responses of a head, and the check that they are usable.
#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "constants.h"
#include "vector3.h"

namespace sonivex_irgen {

/** Responses of both ears to one direction. */
struct HeadMeasurement {
    Vector3 direction;                              // unit vector towards the source
    std::array<std::vector<double>, kEars> ears;    // left, right
    std::array<double, kEars> delays_samples = {};  // delay in front of each response, at the file's rate
};

/** All measured directions of one head. */
struct HeadMeasurements {
    double rate_hz = 0.0;
    std::vector<HeadMeasurement> directions;
};

/** The measurements cannot be used; the text is the reason. */
class UnusableHead : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Throws UnusableHead unless all of this holds:
 *  - there are 64 directions or more;
 *  - all responses have the same length, 64 to 4096 samples;
 *  - the sample rate is 32 to 192 kHz;
 *  - every value is finite and no response is all zeros, or fainter than -200 dB;
 *  - every delay is 0 to 4096 samples;
 *  - a measured direction lies within 15 degrees of each loudspeaker's direction;
 *  - the left ear hears a source on the left louder than the right ear does. */
void checkHeadMeasurements(const HeadMeasurements& head);

}  // namespace sonivex_irgen
