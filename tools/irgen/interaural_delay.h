// How much later a sound reaches the far ear: Woodworth's sphere, and the radius that fits a measured head.
//   delay = a / c * (theta + sin theta), theta the angle off the median plane
#pragma once

#include <vector>

#include "head_measurements.h"
#include "vector3.h"

namespace sonivex_irgen {

/** By how much the right ear is later than the left, in seconds; negative from the right.
 *  @param direction unit vector */
double woodworthDelay_s(double radius_m, const Vector3& direction);

/** The radius whose delays come nearest, by least squares, to the measured ones in the horizontal plane (in
 * all directions, if fewer than 8 lie there); at least 0.07 m and at most 0.11 m. */
double fitHeadRadius_m(const HeadMeasurements& head);

/** When a response first reaches a tenth of its peak, in samples, to an eighth of a sample. */
double onset_samples(const std::vector<double>& response);

}  // namespace sonivex_irgen
