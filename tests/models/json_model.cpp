#include "models/json_model.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace test {
namespace {

using Kind = JsonMember::Kind;

constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;

/** Goes through a text. Each function returns false where the text is not JSON. */
class Reader {
  public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool readDocument(JsonMembers& members) {
        if (rest_.starts_with("\xEF\xBB\xBF")) rest_.remove_prefix(3);
        JsonMember value;
        return readValue(value, &members) && rest_.empty();
    }

  private:
    bool take(char wanted) {
        if (rest_.empty() || rest_.front() != wanted) return false;
        rest_.remove_prefix(1);
        return true;
    }

    void skipSpace() {
        while (!rest_.empty() && std::string_view(" \t\n\r").find(rest_.front()) != std::string_view::npos) {
            rest_.remove_prefix(1);
        }
    }

    bool takeWord(std::string_view word) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    // @param members receives the members if the value is an object; may be null.
    bool readValue(JsonMember& value, JsonMembers* members) {
        skipSpace();
        if (rest_.empty()) return false;
        bool is_good = false;
        switch (rest_.front()) {
            case '{':
                is_good = readObject(members);
                break;
            case '[':
                is_good = readArray();
                break;
            case '"':
                value.kind = Kind::kString;
                is_good = readString(value.text);
                break;
            case 't':
                value.kind = Kind::kTrue;
                is_good = takeWord("true");
                break;
            case 'f':
                value.kind = Kind::kFalse;
                is_good = takeWord("false");
                break;
            case 'n':
                is_good = takeWord("null");
                break;
            default:
                value.kind = Kind::kNumber;
                is_good = readNumber(value.number);
        }
        skipSpace();
        return is_good;
    }

    bool readObject(JsonMembers* members) {
        take('{');
        skipSpace();
        if (take('}')) return true;
        do {
            skipSpace();
            std::string name;
            JsonMember value;
            if (!readString(name)) return false;
            skipSpace();
            if (!take(':') || !readValue(value, nullptr)) return false;
            if (members != nullptr) (*members)[name] = value;
        } while (take(','));
        return take('}');
    }

    bool readArray() {
        take('[');
        skipSpace();
        if (take(']')) return true;
        do {
            JsonMember value;
            if (!readValue(value, nullptr)) return false;
        } while (take(','));
        return take(']');
    }

    bool takeDigits() {
        std::size_t count = 0;
        while (count < rest_.size() && rest_[count] >= '0' && rest_[count] <= '9') ++count;
        rest_.remove_prefix(count);
        return count > 0;
    }

    bool readNumber(double& number) {
        const char* const begin = rest_.data();
        take('-');
        if (!take('0') && !takeDigits()) return false;
        if (take('.') && !takeDigits()) return false;
        if (take('e') || take('E')) {
            if (!take('+')) take('-');
            if (!takeDigits()) return false;
        }
        const std::string digits(begin, static_cast<std::size_t>(rest_.data() - begin));
        constexpr double kLargest = std::numeric_limits<double>::max();
        number = std::clamp(std::strtod(digits.c_str(), nullptr), -kLargest, kLargest);
        return true;
    }

    bool readString(std::string& text) {
        if (!take('"')) return false;
        while (!rest_.empty() && rest_.front() != '"') {
            const std::uint32_t character = rest_.front() == '\\' ? readEscape() : readCharacter();
            if (character == kNoCharacter) return false;
            append(character, text);
        }
        return take('"');
    }

    std::uint32_t readEscape() {
        take('\\');
        if (rest_.empty()) return kNoCharacter;
        const char letter = rest_.front();
        rest_.remove_prefix(1);
        constexpr std::string_view kLetters = "\"\\/bfnrt";
        constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
        if (const auto place = kLetters.find(letter); place != std::string_view::npos) {
            return static_cast<std::uint32_t>(kMeanings[place]);
        }
        if (letter != 'u') return kNoCharacter;
        const std::uint32_t first = readFourDigits();
        if (first == kNoCharacter || first < 0xD800 || first > 0xDFFF) return first;
        if (first > 0xDBFF || !take('\\') || !take('u')) return kNoCharacter;
        const std::uint32_t second = readFourDigits();
        if (second < 0xDC00 || second > 0xDFFF) return kNoCharacter;
        return 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00);
    }

    std::uint32_t readFourDigits() {
        if (rest_.size() < 4) return kNoCharacter;
        std::uint32_t number = 0;
        for (int i = 0; i < 4; ++i) {
            constexpr std::string_view kDigits = "0123456789abcdef0123456789ABCDEF";
            const auto digit = kDigits.find(rest_.front());
            if (digit == std::string_view::npos) return kNoCharacter;
            number = number * 16 + static_cast<std::uint32_t>(digit % 16);
            rest_.remove_prefix(1);
        }
        return number;
    }

    // Reads one character of UTF-8 in its shortest form.
    std::uint32_t readCharacter() {
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        if (first < 0x80) return first < 0x20 ? kNoCharacter : first;
        const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
        if (first < 0xC0 || first > 0xF7) return kNoCharacter;
        std::uint32_t character = first & (0x3FU >> static_cast<unsigned>(more));
        for (int i = 0; i < more; ++i) {
            if (rest_.empty()) return kNoCharacter;
            const auto next = static_cast<std::uint8_t>(rest_.front());
            if ((next & 0xC0U) != 0x80) return kNoCharacter;
            character = character << 6U | (next & 0x3FU);
            rest_.remove_prefix(1);
        }
        constexpr std::uint32_t kLowest[] = {0, 0x80, 0x800, 0x10000};
        const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
        return character < kLowest[more] || character > 0x10FFFF || is_surrogate ? kNoCharacter : character;
    }

    static void append(std::uint32_t character, std::string& text) {
        if (character < 0x80) {
            text += static_cast<char>(character);
            return;
        }
        const unsigned more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        constexpr std::uint32_t kMarks[] = {0, 0xC0, 0xE0, 0xF0};
        text += static_cast<char>(kMarks[more] | character >> (6 * more));
        for (unsigned left = more; left > 0; --left) {
            text += static_cast<char>(0x80U | (character >> (6 * (left - 1)) & 0x3FU));
        }
    }

    std::string_view rest_;
};

}  // namespace

std::optional<JsonMembers> readJsonMembers(std::string_view text) {
    JsonMembers members;
    if (!Reader(text).readDocument(members)) return std::nullopt;
    return members;
}

}  // namespace test
