// Reads head responses from an AES69 (SOFA) file for the tests, independently of the generator.
#pragma once

#include <string>

#include "measured_head.h"

namespace response_quality {

/** Reads the head responses of a file, with the delays that it states.
 *  @throws std::runtime_error with the file's name and the reason, if the file does not hold free-field head
 *          responses of two ears */
MeasuredHead readMeasuredHead(const std::string& path);

}  // namespace response_quality
