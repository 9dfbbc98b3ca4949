#include "models/option_model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "models/json_model.h"

namespace test {
namespace {

using Kind = JsonMember::Kind;

// @return the member's whole number. Another type counts as 1; a number that is no int as the lowest int.
int wholeNumber(const JsonMember& member) {
    if (member.kind != Kind::kNumber) return 1;
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    const double number = member.number;
    const bool is_int = number == std::floor(number) && number >= kLowest && number <= kHighest;
    return is_int ? static_cast<int>(number) : kLowest;
}

}  // namespace

bool OptionModel::set(std::string_view text) {
    const std::optional<JsonMembers> read = readJsonMembers(text);
    if (!read) return false;
    const auto member = [&](const char* name) {
        const auto found = read->find(name);
        return found == read->end() ? nullptr : &found->second;
    };
    if (const JsonMember* type = member("surround_effect_type");
        type != nullptr && type->kind == Kind::kString) {
        if (type->text == "3DSurround") state_.surround_type = 1;
        if (type->text == "MegaBass") state_.surround_type = 13;
    }
    if (const JsonMember* mode = member("surround_mode")) {
        const int number = wholeNumber(*mode);
        if (number == 1 || number == 2 || number == 3) state_.surround_mode = number;
    }
    if (const JsonMember* limiter = member("surround_limiter"))
        state_.surround_limiter = wholeNumber(*limiter);
    if (const JsonMember* voice = member("dialoguenhance_voice")) {
        state_.voice = voice->kind == Kind::kNumber ? std::max(1.0, voice->number) : 1.0;
    }
    static constexpr struct {
        const char* name;
        ModelEffect effect;
    } kSwitches[] = {
        {"enable_surround", ModelEffect::kSurround},
        {"enable_dialoguenhance", ModelEffect::kDialogue},
        {"enable_normalizer", ModelEffect::kNormalizer},
    };
    for (const auto& [name, effect] : kSwitches) {
        const JsonMember* const value = member(name);
        if (value == nullptr) continue;
        if (value->kind == Kind::kTrue) {
            state_.effect = effect;
        } else if (state_.effect == effect) {
            state_.effect = ModelEffect::kNone;
        }
    }
    if (const JsonMember* dump = member("enable_dump")) state_.is_dumped = dump->kind == Kind::kTrue;
    return true;
}

ModelEffect OptionModel::effectFor(int channels, int rate_hz) const {
    const bool is_music_rate = rate_hz == 44100 || rate_hz == 48000;
    const bool is_layout = channels == 1 || channels == 2 || channels == 6 || channels == 8;
    bool is_processed = false;
    switch (state_.effect) {
        case ModelEffect::kNone:
            break;
        case ModelEffect::kDialogue:
            is_processed = channels == 2 && is_music_rate;
            break;
        case ModelEffect::kSurround:
            is_processed = is_layout && is_music_rate;
            break;
        case ModelEffect::kNormalizer:
            is_processed = is_layout && (is_music_rate || rate_hz == 16000);
            break;
    }
    return is_processed ? state_.effect : ModelEffect::kNone;
}

}  // namespace test
