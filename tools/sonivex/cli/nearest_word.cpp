#include "nearest_word.h"

#include <algorithm>

namespace sonivex_tool {
namespace {

constexpr size_t kShortestWord = 3;
constexpr size_t kLongestWord = 64;  // longer words are no typing errors, and the table stays small
constexpr size_t kLettersPerError = 3;

std::string lowered(std::string text) {
    for (char& letter : text) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    return text;
}

// Edit distance with swaps of neighbours (optimal string alignment).
size_t distanceBetween(const std::string& a, const std::string& b) {
    std::vector<std::vector<size_t>> table(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            size_t& distance = table[i][j];
            distance = std::max(i, j);
            if (i == 0 || j == 0) continue;
            const bool is_same = a[i - 1] == b[j - 1];
            distance = std::min(
                {table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + (is_same ? 0U : 1U)});
            const bool is_swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (is_swapped) distance = std::min(distance, table[i - 2][j - 2] + 1);
        }
    }
    return table[a.size()][b.size()];
}

std::optional<std::string> onlyOneBeginningWith(const std::string& word,
                                                const std::vector<std::string>& candidates) {
    std::optional<std::string> found;
    for (const std::string& candidate : candidates) {
        if (lowered(candidate).rfind(word, 0) != 0) continue;
        if (found) return std::nullopt;
        found = candidate;
    }
    return found;
}

}  // namespace

std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates) {
    if (word.size() < kShortestWord || word.size() > kLongestWord) return std::nullopt;
    const std::string low = lowered(word);
    size_t best = (word.size() + 1) / kLettersPerError + 1;  // the first distance that is too far
    std::optional<std::string> nearest;
    for (const std::string& candidate : candidates) {
        if (candidate.size() > kLongestWord) continue;
        const size_t distance = distanceBetween(low, lowered(candidate));
        if (distance >= best) continue;
        best = distance;
        nearest = candidate;
    }
    return nearest ? nearest : onlyOneBeginningWith(low, candidates);
}

std::string didYouMean(const std::string& word, const std::vector<std::string>& candidates) {
    const auto nearest = nearestWord(word, candidates);
    return nearest ? "; did you mean \"" + *nearest + "\"?" : std::string();
}

}  // namespace sonivex_tool
