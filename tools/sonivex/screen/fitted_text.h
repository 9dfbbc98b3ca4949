#pragma once

#include <string>

namespace sonivex_tool {

/** Fits a line of UTF-8 into a terminal: cuts it after `columns` columns, never within a character, and
 *  replaces control characters and bytes that are not UTF-8 by '?'. Wide characters take two columns, and
 *  combining ones none. */
std::string fittedText(const std::string& line, int columns);

}  // namespace sonivex_tool
