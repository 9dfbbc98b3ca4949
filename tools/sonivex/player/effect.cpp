#include "effect.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace sonivex_tool {
namespace {

// Highest of the rates that dialogue enhancement processes; its timing is the same at the other.
constexpr int kDialogueRate_hz = 48000;

std::string listOf(const std::vector<int>& numbers) {
    std::string text;
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0) text += i + 1 == numbers.size() ? " or " : ", ";
        text += std::to_string(numbers[i]);
    }
    return text;
}

bool contains(const std::vector<int>& numbers, int number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

const std::vector<Effect>& allEffects() {
    static const std::vector<Effect> effects = {
        {.name = "normalizer",
         .title = "the normalizer",
         .enable_option = "enable_normalizer",
         .exported_function = "aem_CreateNormalizer",
         .channels = {1, 2, 6, 8},
         .rates_hz = {16000, 44100, 48000},
         .timing = sonivex::normalizerTiming(),
         .output_channels = std::nullopt},
        {.name = "surround",
         .title = "surround",
         .enable_option = "enable_surround",
         .exported_function = "aem_CreateSurround",
         .channels = {1, 2, 6, 8},
         .rates_hz = {44100, 48000},
         .timing = sonivex::surroundTiming(false, 2),
         .output_channels = 2},
        {.name = "dialogue",
         .title = "dialogue enhancement",
         .enable_option = "enable_dialoguenhance",
         .exported_function = "aem_CreateDialoguEnhance",
         .channels = {2},
         .rates_hz = {44100, 48000},
         .timing = sonivex::dialogueTiming(kDialogueRate_hz),
         .output_channels = std::nullopt},
    };
    return effects;
}

std::vector<std::string> effectNames() {
    std::vector<std::string> names;
    for (const Effect& effect : allEffects()) names.push_back(effect.name);
    return names;
}

std::optional<int64_t> effectDelayFrames(const Effect& effect, int call_frames) {
    return sonivex::delayInCalls_frames(effect.timing, call_frames);
}

const Effect* findEffect(const std::string& name) {
    for (const Effect& effect : allEffects()) {
        if (effect.name == name) return &effect;
    }
    return nullptr;
}

std::string whyUnsupported(const Effect& effect, int channels, int rate_hz) {
    if (!contains(effect.channels, channels)) {
        return effect.title + " supports " + listOf(effect.channels) + " channels, not " +
               std::to_string(channels);
    }
    if (!contains(effect.rates_hz, rate_hz)) {
        return effect.title + " supports " + listOf(effect.rates_hz) + " Hz, not " + std::to_string(rate_hz);
    }
    return {};
}

std::string optionsJson(const Effect& effect, const FilterOptions& options) {
    nlohmann::json object = nlohmann::json::object();
    if (options.surround_type) object["surround_effect_type"] = *options.surround_type;
    if (options.surround_mode) object["surround_mode"] = *options.surround_mode;
    if (options.no_limiter) object["surround_limiter"] = 0;
    if (options.voice) object["dialoguenhance_voice"] = *options.voice;
    if (options.dump) object["enable_dump"] = true;
    object[effect.enable_option] = true;
    return object.dump();
}

}  // namespace sonivex_tool
