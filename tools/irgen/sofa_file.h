// Head responses out of an AES69 (SOFA) file.
#pragma once

#include <string>

#include "head_measurements.h"

struct MYSOFA_HRTF;

namespace sonivex_irgen {

/** The measurements in a record of libmysofa whose positions are Cartesian, not yet checked themselves.
 *  Throws UnusableHead if there are not two receivers on two sides, or an array does not fit its dimensions.
 */
HeadMeasurements measurementsIn(const MYSOFA_HRTF& hrtf);

/** Read and check a file of free-field head responses.
 *  Throws UnusableHead with the reason, without the file's name. */
HeadMeasurements readSofaFile(const std::string& path);

}  // namespace sonivex_irgen
