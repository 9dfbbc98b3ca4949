/* Head responses out of an AES69 (SOFA) file. */
#pragma once

#include <string>

#include "head_measurements.h"

namespace sonivex_irgen {

/** Read and check a file of free-field head responses.
 *  Throws UnusableHead with the reason, without the file's name. */
HeadMeasurements readSofaFile(const std::string& path);

}  // namespace sonivex_irgen
