#include "fitted_text.h"

#include <clocale>
#include <cwchar>
#include <string_view>

namespace sonivex_tool {
namespace {

/** The character set UTF-8 for the calling thread, whatever the user's locale is. */
class Utf8Locale {
  public:
    Utf8Locale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{})) {
        if (locale_ != locale_t{}) original_ = uselocale(locale_);
    }
    ~Utf8Locale() {
        if (locale_ == locale_t{}) return;
        uselocale(original_);
        freelocale(locale_);
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    locale_t locale_;
    locale_t original_{};
};

struct Character {
    size_t bytes = 1;
    int columns = -1;  // negative: not for a terminal
};

Character firstOf(std::string_view text) {
    wchar_t code = 0;
    std::mbstate_t state{};
    const size_t bytes = std::mbrtowc(&code, text.data(), text.size(), &state);
    const bool is_valid = bytes > 0 && bytes <= text.size();
    return is_valid ? Character{bytes, wcwidth(code)} : Character{};
}

}  // namespace

std::string fittedText(const std::string& line, int columns) {
    const Utf8Locale utf8;
    std::string text;
    int used = 0;
    for (std::string_view rest = line; !rest.empty();) {
        const Character first = firstOf(rest);
        used += first.columns < 0 ? 1 : first.columns;
        if (used > columns) break;
        if (first.columns < 0) {
            text += '?';
        } else {
            text += rest.substr(0, first.bytes);
        }
        rest.remove_prefix(first.bytes);
    }
    return text;
}

}  // namespace sonivex_tool
