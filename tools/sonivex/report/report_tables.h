#pragma once

#include <string>

#include "measured_report.h"

namespace sonivex_tool {

/** Returns the section with the figures of all versions as a table of HTML. */
std::string summaryTable(const MeasuredReport& report);
/** Returns a table for each set of responses: delay, level difference and direct-to-reverberant ratio of each
 *  loudspeaker; nothing without surround. */
std::string responseTables(const MeasuredReport& report);
/** Returns the section with the load guard's counts and events. */
std::string guardTable(const MeasuredReport& report);

}  // namespace sonivex_tool
