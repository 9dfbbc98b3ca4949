#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Returns the candidate that a mistyped word most likely means.
 *
 * The distance counts letters that are missing, extra or wrong, and neighbours that are swapped, each as 1;
 * capitals do not matter. A candidate is near enough if about one letter in three of the word is wrong at
 * most. If none is, the only candidate that begins with the word is returned. Of several candidates at the
 * same distance the first one is returned.
 *
 * @param word a word of fewer than three letters has no nearest word
 * @return nothing if no candidate is near enough */
std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates);

/** Returns `; did you mean "<candidate>"?` for the nearest word, or nothing at all, to be put behind the
 * message that rejects `word`. */
std::string didYouMean(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace sonivex_tool
