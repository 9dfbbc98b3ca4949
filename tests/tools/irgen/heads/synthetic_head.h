#pragma once

#include "head_measurements.h"

namespace irgen_test {

/** A head with interaural time and level differences alone: each response is one sample, and for a source at
 *  the side the far ear hears it later and 6 dB lower. Directions are 10 degrees apart in azimuth and 15
 *  degrees in elevation, at 48 kHz. */
sonivex_irgen::HeadMeasurements syntheticHead();

/** The packaged measurements, read once, or null where they are not installed. */
const sonivex_irgen::HeadMeasurements* packagedHead();

}  // namespace irgen_test

// Skips the test where the packaged measurements are not installed.
#define SONIVEX_NEED_PACKAGED_HEAD() \
    if (irgen_test::packagedHead() == nullptr) GTEST_SKIP() << "the packaged measurements are not installed"
