// Reader for head responses in AES69 (SOFA) files.
#pragma once

#include <string>

#include "head_measurements.h"

struct MYSOFA_HRTF;

namespace sonivex_irgen {

/** Converts a record of libmysofa whose positions are Cartesian. It does not call checkHeadMeasurements.
 *  Throws UnusableHead if there are not two receivers on opposite sides, a source is at the centre of the
 *  head, or the size of an array does not match the dimensions. */
HeadMeasurements measurementsIn(const MYSOFA_HRTF& hrtf);

/** Reads and checks a file of free-field head responses.
 *  Throws UnusableHead with the reason, without the file's name. */
HeadMeasurements readSofaFile(const std::string& path);

}  // namespace sonivex_irgen
