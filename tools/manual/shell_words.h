// Lists of words as the shells' completions write them.
#pragma once

#include <string>
#include <vector>

namespace sonivex_manual {

/** Returns the words with a space between two of them. */
std::string joined(const std::vector<std::string>& words);

/** Returns the text with a backslash before each parenthesis. Without it fish sees a command there, zsh a
 *  group and bash a mistake. */
std::string withEscapedParentheses(const std::string& text);

}  // namespace sonivex_manual
