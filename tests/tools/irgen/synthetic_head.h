#pragma once

#include "head_measurements.h"

namespace irgen_test {

/** A head that hears nothing but time and level: one sample for each ear, later and 6 dB lower at the far
 * one, every 10 degrees of azimuth and 15 of elevation. */
sonivex_irgen::HeadMeasurements syntheticHead();

/** The packaged measurements, read once; the test that asks is skipped where they are not installed. */
const sonivex_irgen::HeadMeasurements* packagedHead();

}  // namespace irgen_test

#define SONIVEX_NEED_PACKAGED_HEAD() \
    if (irgen_test::packagedHead() == nullptr) GTEST_SKIP() << "no packaged measurements"
