#pragma once

#include <string>

#include "inspect.h"

namespace sonivex_tool {

/** Formats the report for people: a table for each file and a few lines for each pair, the last line
 *  terminated. */
std::string asText(const InspectReport& report);

/** Formats the report for programs: one JSON object on one terminated line. */
std::string asJson(const InspectReport& report);

}  // namespace sonivex_tool
