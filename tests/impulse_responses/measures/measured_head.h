// Head responses as they were measured: the reference for the interaural differences of the direct sound.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "response_sets.h"

namespace response_quality {

/** Responses of both ears to a sound from one direction. */
struct MeasuredDirection {
    std::array<double, 3> unit{};  // towards the source; x to the front, y to the left, z up
    Ears ears;                     // delays included
};

/** Free-field responses of a head. */
struct MeasuredHead {
    double rate_hz = 0.0;
    std::vector<MeasuredDirection> directions;

    /** Responses of the measured direction that is nearest to this one at ear height. There is at least one
     *  direction. */
    const Ears& nearest(double azimuth_deg) const;
};

/** The head that the compiled responses are compared with. */
struct HeadReference {
    double radius_m = 0.0;
    std::optional<MeasuredHead> measured;  // empty if its measurement is not at hand
    bool is_default = false;               // the head of the committed tables
};

}  // namespace response_quality
