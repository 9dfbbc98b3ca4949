#pragma once

#include <optional>
#include <string>

namespace sonivex_tool {

/** Draws a level as a bar of `columns` characters: '=' up to the level, '.' beyond it.
 *  @param level between `lowest` and `highest`; missing: an empty bar
 *  @param peak marked by '|', if it is given and within the bar */
std::string levelBar(std::optional<double> level, std::optional<double> peak, double lowest, double highest,
                     int columns);

}  // namespace sonivex_tool
