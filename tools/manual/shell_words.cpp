#include "shell_words.h"

namespace sonivex_manual {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string joinedLiterally(const std::vector<std::string>& words) {
    std::string text;
    for (const char letter : joined(words)) {
        if (letter == '(' || letter == ')') text += '\\';
        text += letter;
    }
    return text;
}

}  // namespace sonivex_manual
