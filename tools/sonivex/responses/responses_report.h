#pragma once

#include <optional>
#include <string>
#include <vector>

#include "responses_tables.h"

namespace sonivex_tool {

/** The tables to list. */
struct ResponseChoice {
    std::vector<const ResponseSet*> sets;
    std::optional<int> source;  // number of the source in each set, from 1; missing: all sources
};

/** Measures the chosen responses and formats the figures for people: a table for each set, the last line
 *  terminated. */
std::string responsesText(const ResponseChoice& choice);

/** Measures the chosen responses and formats the figures for programs: one JSON array with an object for each
 *  table, on one terminated line. */
std::string responsesJson(const ResponseChoice& choice);

}  // namespace sonivex_tool
