// Lists of words as the shells' completions write them.
#pragma once

#include <string>
#include <vector>

namespace sonivex_manual {

/** Returns the words with a space between two of them. */
std::string joined(const std::vector<std::string>& words);

/** The same with a backslash before each parenthesis, for shells that take it for a command or a group. */
std::string joinedLiterally(const std::vector<std::string>& words);

}  // namespace sonivex_manual
