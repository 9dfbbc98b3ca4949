#include "shell_words.h"

namespace sonivex_manual {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string withEscapedParentheses(const std::string& text) {
    std::string escaped;
    for (const char letter : text) {
        if (letter == '(' || letter == ')') escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

}  // namespace sonivex_manual
