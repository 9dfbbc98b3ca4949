#pragma once

#include <string>

#include "inspect.h"

namespace sonivex_tool {

/** For people: a table for each file and a few lines for each pair, with the last newline. */
std::string asText(const InspectReport& report);

/** For programs: one JSON object on one line, with the newline. */
std::string asJson(const InspectReport& report);

}  // namespace sonivex_tool
