#pragma once

#include "head_measurements.h"

namespace irgen_test {

/** A rigid sphere with an ear at each side, and the grid on which it is measured. */
struct RigidSphere {
    double radius_m;
    double ear_azimuth_deg;  // of the left ear; 90 is the end of the diameter, more is further back
    double rate_hz;
    int azimuth_step_deg;
    int elevation_step_deg;
};

/** Responses of a rigid sphere to plane waves from elevations of -45 degrees up, 256 samples each, by the
 *  series of R. Duda and W. Martens, "Range dependence of the response of a spherical head model", JASA 104
 *  (1998), for a distant source. They hold the delays of the sphere as well as its shadow. */
sonivex_irgen::HeadMeasurements rigidSphere(const RigidSphere& sphere);

}  // namespace irgen_test
