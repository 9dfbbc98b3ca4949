// Interaural delay of Woodworth's spherical head, and the radius of the sphere that fits a measured head.
//   delay = a / c * (theta + sin theta), theta the angle off the median plane
#pragma once

#include <vector>

#include "head_measurements.h"
#include "vector3.h"

namespace sonivex_irgen {

/** Time in seconds by which the sound reaches the right ear after the left one; negative for a source on the
 *  right.
 *  @param direction unit vector */
double woodworthDelay_s(double radius_m, const Vector3& direction);

/** Radius whose delays fit the measured ones best by least squares, limited to 0.07..0.11 m. The fit uses the
 *  directions in the horizontal plane, or all directions if fewer than 8 lie there. */
double fitHeadRadius_m(const HeadMeasurements& head);

/** Position in samples, to an eighth of a sample, at which a response first reaches a tenth of its peak. */
double onset_samples(const std::vector<double>& response);

}  // namespace sonivex_irgen
