#include "vorlin/json_item.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <variant>

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
    stream.exceptions(std::ios::badbit);   // a lack of memory is no property of the number
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

// The value of a member. An array, an object and null are all an std::monostate.
using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string>;
using Members = std::map<std::string, Value>;

// Keeps the members of the outermost object while the parser goes through a text. The library's own tree of
// values is no alternative: it asks for memory when it is destroyed, and ends the process if there is none.
class MemberReader final : public nlohmann::json_sax<json> {
  public:
    Members takeMembers() { return std::move(mMembers); }

    bool null() override { return take({}); }
    bool boolean(bool value) override { return take(value); }
    bool number_integer(std::int64_t value) override { return take(value); }
    bool number_unsigned(std::uint64_t value) override { return take(value); }
    bool number_float(double value, const std::string&) override { return take(value); }
    bool string(std::string& value) override { return take(std::move(value)); }
    bool binary(json::binary_t&) override { return take({}); }
    bool start_object(std::size_t) override { return enter(true); }
    bool key(std::string& name) override {
        if (mDepth == 1) mName = std::move(name);
        return true;
    }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t) override { return enter(false); }
    bool end_array() override { return leave(); }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override { return false; }

  private:
    bool take(Value value) {
        if (mDepth == 1 && mIsObject) mMembers.insert_or_assign(mName, std::move(value));
        return true;
    }
    bool enter(bool is_object) {
        if (mDepth == 0) mIsObject = is_object;
        take({});
        ++mDepth;
        return true;
    }
    bool leave() {
        --mDepth;
        return true;
    }

    Members mMembers;
    std::string mName;       // of the member whose value comes next
    bool mIsObject = false;  // the outermost value is an object
    int64_t mDepth = 0;      // objects and arrays around the next value
};

// Returns the members of the object in `text`, none for another value, and nothing if the text is not JSON.
std::optional<Members> parse(const std::string& text) {
    MemberReader reader;
    if (!json::sax_parse(text, &reader)) return std::nullopt;
    return reader.takeMembers();
}

std::optional<Members> parseAnyNumber(const std::string& text) {
    // The parser treats a zero byte as the end of the text, but JSON does not allow one anywhere.
    if (text.find('\0') != std::string::npos) return std::nullopt;
    std::optional<Members> members = parse(text);
    // Numbers beyond the range of a double are valid JSON, but the parser refuses them.
    if (!members) members = parse(withSaturatedNumbers(text));
    return members;
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

// Returns what VorlinJSONItem::getInt returns for this value.
int asInt(const Value& value, int fallback) {
    constexpr int kNoInt = VorlinJSONItem::kNoInt;
    if (const auto* number = std::get_if<std::uint64_t>(&value))
        return integerAsInt(*number).value_or(kNoInt);
    if (const auto* number = std::get_if<std::int64_t>(&value)) return integerAsInt(*number).value_or(kNoInt);
    if (const auto* number = std::get_if<double>(&value)) return fractionAsInt(*number).value_or(kNoInt);
    return fallback;
}

double asDouble(const Value& value, double fallback) {
    if (const auto* number = std::get_if<std::uint64_t>(&value)) return static_cast<double>(*number);
    if (const auto* number = std::get_if<std::int64_t>(&value)) return static_cast<double>(*number);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    return fallback;
}

}  // namespace

struct VorlinJSONItem::Document {
    std::optional<Members> members;  // nothing if the text is not JSON

    const Value* find(const std::string& name) const {
        if (!members) return nullptr;
        const auto found = members->find(name);
        return found == members->end() ? nullptr : &found->second;
    }
};

VorlinJSONItem::VorlinJSONItem(const std::string& text) : mDocument(new Document{parseAnyNumber(text)}) {}
VorlinJSONItem::VorlinJSONItem(VorlinJSONItem&&) noexcept = default;
VorlinJSONItem& VorlinJSONItem::operator=(VorlinJSONItem&&) noexcept = default;
VorlinJSONItem::~VorlinJSONItem() = default;

bool VorlinJSONItem::isValid() const {
    return mDocument && mDocument->members.has_value();
}

bool VorlinJSONItem::hasItem(const std::string& name) const {
    return mDocument && mDocument->find(name) != nullptr;
}

std::string VorlinJSONItem::getString(const std::string& name, const std::string& fallback) const {
    const Value* member = mDocument ? mDocument->find(name) : nullptr;
    const auto* text = member != nullptr ? std::get_if<std::string>(member) : nullptr;
    return text != nullptr ? *text : fallback;
}

int VorlinJSONItem::getInt(const std::string& name, int fallback) const {
    const Value* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr ? asInt(*member, fallback) : fallback;
}

bool VorlinJSONItem::getBool(const std::string& name, bool fallback) const {
    const Value* member = mDocument ? mDocument->find(name) : nullptr;
    const auto* flag = member != nullptr ? std::get_if<bool>(member) : nullptr;
    return flag != nullptr ? *flag : fallback;
}

double VorlinJSONItem::getDouble(const std::string& name, double fallback) const {
    const Value* member = mDocument ? mDocument->find(name) : nullptr;
    return member != nullptr ? asDouble(*member, fallback) : fallback;
}

}  // namespace Vorlin
