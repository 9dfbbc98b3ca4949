#include "vorlin/json_item.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace Vorlin {

namespace {

using nlohmann::json;

json parse(const std::string& text) {
    // The parser takes a zero byte for the end of the text; no JSON text holds one.
    if (text.find('\0') != std::string::npos) return json(json::value_t::discarded);
    constexpr bool THROW = false;
    return json::parse(text, nullptr, THROW);
}

template <typename Integer>
std::optional<int> integerAsInt(Integer value) {
    if (!std::in_range<int>(value)) return std::nullopt;
    return static_cast<int>(value);
}

std::optional<int> fractionAsInt(double value) {
    // Both limits of an int are exact as doubles; NaN fails the comparisons.
    constexpr double LOWEST = std::numeric_limits<int>::min();
    constexpr double HIGHEST = std::numeric_limits<int>::max();
    if (!(value >= LOWEST && value <= HIGHEST) || std::trunc(value) != value) return std::nullopt;
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
    return member != nullptr ? asInt(*member).value_or(fallback) : fallback;
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
