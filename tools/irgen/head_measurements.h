// Measured free-field responses of a head, and whether they will do.
#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "constants.h"
#include "vector3.h"

namespace sonivex_irgen {

/** The responses of both ears to one direction. */
struct HeadMeasurement {
    Vector3 direction;                              // unit vector towards the source
    std::array<std::vector<double>, kEars> ears;    // left, right
    std::array<double, kEars> delays_samples = {};  // to be added before the responses
};

struct HeadMeasurements {
    double rate_hz = 0.0;
    std::vector<HeadMeasurement> directions;
};

/** The measurements cannot be used; the text is the reason. */
class UnusableHead : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Throws UnusableHead for fewer than 64 directions, responses shorter than 64 or longer than 4096 samples or
 * of unequal length, a rate outside 32-192 kHz, a value that is not finite, a response that is all zero, a
 * gap of more than 15 degrees around a loudspeaker's direction, and ears the wrong way round. */
void checkHeadMeasurements(const HeadMeasurements& head);

}  // namespace sonivex_irgen
