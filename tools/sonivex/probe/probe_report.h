#pragma once

#include <string>

#include "probe.h"

namespace sonivex_tool {

/** Formats a probe for people: a line for each stream, and under each audio stream one for each effect. The
 *  last line is terminated. */
std::string asText(const Probe& probe);

/** Formats a probe for programs: one JSON object on one terminated line. */
std::string asJson(const Probe& probe);

}  // namespace sonivex_tool
