// The head that the compiled responses are compared with: its radius, and its measurement if it can be read.
#pragma once

#include "measured_head.h"

namespace response_quality {

/** Says why a test against the measured head is skipped. */
inline constexpr const char* kNoMeasuredHead =
    "the measured head is not at hand: rows against it need libmysofa and the SOFA file";

/** The head of this build.
 *
 *  The radius is a typical head's for the committed tables, otherwise the fitted radius that the generated
 *  source states (NaN if it states none, so that every comparison fails). The measurement is that of the file
 *  the tables were made from. It is empty in a build without libmysofa or without the file.
 *  @throws std::runtime_error if the file is there but cannot be used */
const HeadReference& referenceHead();

}  // namespace response_quality
