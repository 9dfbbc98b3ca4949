#pragma once

#include <optional>
#include <string>
#include <vector>

#include "responses_tables.h"

namespace sonivex_tool {

/** Which tables to list. */
struct ResponseChoice {
    std::vector<const ResponseSet*> sets;
    std::optional<int> source;  // from 1; all if there is none
};

/** For people: a table for each set, with the last newline. */
std::string responsesText(const ResponseChoice& choice);

/** For programs: one JSON array of tables on one line, with the newline. */
std::string responsesJson(const ResponseChoice& choice);

}  // namespace sonivex_tool
