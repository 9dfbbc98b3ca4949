#include "vorlin/json_item.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

namespace Vorlin {

namespace {

using nlohmann::json;

// Returns the number at the start of `text`, by the grammar of JSON; empty if there is none.
std::string_view leadingNumber(std::string_view text) {
    const auto skip_one_of = [&text](size_t at, std::string_view characters) {
        return at < text.size() && characters.find(text[at]) != std::string_view::npos ? at + 1 : at;
    };
    const auto skip_digits = [&text](size_t at) {
        return std::min(text.find_first_not_of("0123456789", at), text.size());
    };
    const size_t integer = skip_one_of(0, "-");
    const size_t zero = skip_one_of(integer, "0");
    size_t end = zero > integer ? zero : skip_digits(integer);
    if (end == integer) return {};
    const size_t fraction = skip_one_of(end, ".");
    if (fraction > end && skip_digits(fraction) > fraction) end = skip_digits(fraction);
    const size_t exponent = skip_one_of(end, "eE");
    const size_t exponent_digits = skip_one_of(exponent, "+-");
    if (exponent > end && skip_digits(exponent_digits) > exponent_digits) end = skip_digits(exponent_digits);
    return text.substr(0, end);
}

bool isBeyondDouble(std::string_view number) {
    std::istringstream stream{std::string(number)};
    stream.imbue(std::locale::classic());  // strtod would take the decimal point from the user's locale
    double value = 0.0;
    stream >> value;
    return stream.fail() && std::abs(value) > 1.0;  // too small a number gives 0, which is in range
}

// Replaces every number beyond the range of a double by the largest double of its sign.
std::string withSaturatedNumbers(std::string_view text) {
    std::string result;
    bool is_in_string = false;
    while (!text.empty()) {
        std::string_view next = is_in_string ? std::string_view() : leadingNumber(text);
        const bool is_number = !next.empty();
        if (!is_number) next = text.substr(0, is_in_string && text.front() == '\\' ? 2 : 1);
        if (next == "\"") is_in_string = !is_in_string;
        if (is_number && isBeyondDouble(next)) {
            result += next.front() == '-' ? "-1.7976931348623157e308" : "1.7976931348623157e308";
        } else {
            result += next;
        }
        text.remove_prefix(next.size());
    }
    return result;
}

json parse(const std::string& text) {
    // The parser treats a zero byte as the end of the text, but JSON does not allow one anywhere.
    if (text.find('\0') != std::string::npos) return json(json::value_t::discarded);
    constexpr bool kThrow = false;
    json value = json::parse(text, nullptr, kThrow);
    // Numbers beyond the range of a double are valid JSON, but the parser refuses them.
    if (value.is_discarded()) value = json::parse(withSaturatedNumbers(text), nullptr, kThrow);
    return value;
}

template <typename Integer>
std::optional<int> integerAsInt(Integer value) {
    if (!std::in_range<int>(value)) return std::nullopt;
    return static_cast<int>(value);
}

std::optional<int> fractionAsInt(double value) {
    // A double represents both limits of an int exactly. NaN fails the comparisons.
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    if (!(value >= kLowest && value <= kHighest) || std::trunc(value) != value) return std::nullopt;
    return static_cast<int>(value);
}

std::optional<int> asInt(const json& value) {
    if (value.is_number_unsigned()) return integerAsInt(value.get<std::uint64_t>());
    if (value.is_number_integer()) return integerAsInt(value.get<std::int64_t>());
    if (value.is_number_float()) return fractionAsInt(value.get<double>());
    return std::nullopt;
}

}  // namespace

struct VorlinJSONItem::Document {
    json value;

    const json* find(const std::string& name) const {
        if (!value.is_object()) return nullptr;
        const auto found = value.find(name);
        return found == value.end() ? nullptr : &*found;
    }
};

VorlinJSONItem::VorlinJSONItem(const std::string& text) : mDocument(new Document{parse(text)}) {}
VorlinJSONItem::VorlinJSONItem(VorlinJSONItem&&) noexcept = default;
VorlinJSONItem& VorlinJSONItem::operator=(VorlinJSONItem&&) noexcept = default;
VorlinJSONItem::~VorlinJSONItem() = default;

bool VorlinJSONItem::isValid() const {
    return mDocument && !mDocument->value.is_discarded();
}

bool VorlinJSONItem::hasItem(const std::string& name) const {
    return mDocument && mDocument->find(name) != nullptr;
}

std::string VorlinJSONItem::getString(const std::string& name, const std::string& fallback) const {
    const json* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr && member->is_string() ? member->get<std::string>() : fallback;
}

int VorlinJSONItem::getInt(const std::string& name, int fallback) const {
    const json* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr && member->is_number() ? asInt(*member).value_or(kNoInt) : fallback;
}

bool VorlinJSONItem::getBool(const std::string& name, bool fallback) const {
    const json* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr && member->is_boolean() ? member->get<bool>() : fallback;
}

double VorlinJSONItem::getDouble(const std::string& name, double fallback) const {
    const json* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr && member->is_number() ? member->get<double>() : fallback;
}

}  // namespace Vorlin
