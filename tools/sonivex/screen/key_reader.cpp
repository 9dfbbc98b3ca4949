#include "key_reader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace sonivex_tool {
namespace {

constexpr char kEscape = '\033';
// A sequence that is longer is none.
constexpr size_t kLongestSequence = 16;

bool endsSequence(char character) {
    return character >= '@' && character <= '~';
}

std::string nameOfSequence(std::string_view parameters, char last) {
    constexpr std::array<std::pair<char, const char*>, 4> kArrows = {
        {{'A', "up"}, {'B', "down"}, {'C', "right"}, {'D', "left"}}};
    if (parameters.empty()) {
        for (const auto& [letter, name] : kArrows) {
            if (last == letter) return name;
        }
    }
    if (last == '~' && parameters == "5") return "pageup";
    if (last == '~' && parameters == "6") return "pagedown";
    return {};
}

std::string nameOfCharacter(char character) {
    if (character == ' ') return "space";
    if (character == '\r' || character == '\n') return "enter";
    const bool is_printable = character > ' ' && character <= '~';
    return is_printable ? std::string(1, character) : std::string();
}

}  // namespace

std::vector<std::string> KeyReader::read(std::string_view bytes) {
    waiting_ += bytes;
    std::vector<std::string> keys;
    while (std::optional<std::string> key = next()) {
        if (!key->empty()) keys.push_back(std::move(*key));
    }
    return keys;
}

// Returns the next key, the empty text for a key without a name, or nothing if the bytes do not suffice.
std::optional<std::string> KeyReader::next() {
    if (is_overlong_) skipRestOfSequence();
    if (waiting_.empty()) return std::nullopt;
    if (waiting_[0] != kEscape) {
        const std::string name = nameOfCharacter(waiting_[0]);
        waiting_.erase(0, 1);
        return name;
    }
    if (waiting_.size() < 2) return std::nullopt;
    if (waiting_[1] != '[' && waiting_[1] != 'O') {
        waiting_.erase(0, 1);  // the escape key, and then another key
        return std::string();
    }
    for (size_t end = 2; end < std::min(waiting_.size(), kLongestSequence); ++end) {
        const char character = waiting_[end];
        if (!endsSequence(character)) continue;
        const std::string name = nameOfSequence(std::string_view(waiting_).substr(2, end - 2), character);
        waiting_.erase(0, end + 1);
        return name;
    }
    if (waiting_.size() < kLongestSequence) return std::nullopt;
    waiting_.erase(0, kLongestSequence);
    is_overlong_ = true;
    return std::string();
}

// The character that would end the sequence counts as a key, because nothing says that it belongs to it.
void KeyReader::skipRestOfSequence() {
    const auto end = std::find_if(waiting_.begin(), waiting_.end(), [](char character) {
        return character == kEscape || endsSequence(character);
    });
    is_overlong_ = end == waiting_.end();
    waiting_.erase(waiting_.begin(), end);
}

}  // namespace sonivex_tool
