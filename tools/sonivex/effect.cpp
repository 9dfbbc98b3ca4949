#include "effect.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "latency.h"

namespace sonivex_tool {
namespace {

// Its frames of 2048 samples overlap by three quarters: a block of input leaves three hops after it came.
constexpr int kDialogueHops = 3;
constexpr int kDialogueHopFrames = 512;

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
         .enableOption = "enable_normalizer",
         .exportedFunction = "aem_CreateNormalizer",
         .channels = {1, 2, 6, 8},
         .ratesHz = {16000, 44100, 48000},
         .blockFrames = 512,
         .ownDelayFrames = 0,
         .outputChannels = std::nullopt},
        {.name = "surround",
         .title = "surround",
         .enableOption = "enable_surround",
         .exportedFunction = "aem_CreateSurround",
         .channels = {1, 2, 6, 8},
         .ratesHz = {44100, 48000},
         .blockFrames = 240,
         .ownDelayFrames = 0,
         .outputChannels = 2},
        {.name = "dialogue",
         .title = "dialogue enhancement",
         .enableOption = "enable_dialoguenhance",
         .exportedFunction = "aem_CreateDialoguEnhance",
         .channels = {2},
         .ratesHz = {44100, 48000},
         .blockFrames = 512,
         .ownDelayFrames = kDialogueHops * kDialogueHopFrames,
         .outputChannels = std::nullopt},
    };
    return effects;
}

std::vector<std::string> effectNames() {
    std::vector<std::string> names;
    for (const Effect& effect : allEffects()) names.push_back(effect.name);
    return names;
}

std::optional<int64_t> effectDelayFrames(const Effect& effect, int callFrames) {
    const auto queueing = constantDelayFrames(effect.blockFrames, callFrames);
    if (!queueing) return std::nullopt;
    return *queueing + effect.ownDelayFrames;
}

const Effect* findEffect(const std::string& name) {
    for (const Effect& effect : allEffects()) {
        if (effect.name == name) return &effect;
    }
    return nullptr;
}

std::string whyUnsupported(const Effect& effect, int channels, int rateHz) {
    if (!contains(effect.channels, channels)) {
        return effect.title + " takes " + listOf(effect.channels) + " channels, not " +
               std::to_string(channels);
    }
    if (!contains(effect.ratesHz, rateHz)) {
        return effect.title + " takes " + listOf(effect.ratesHz) + " Hz, not " + std::to_string(rateHz);
    }
    return {};
}

std::string optionsJson(const Effect& effect, const FilterOptions& options) {
    nlohmann::json object = nlohmann::json::object();
    if (options.surroundType) object["surround_effect_type"] = *options.surroundType;
    if (options.surroundMode) object["surround_mode"] = *options.surroundMode;
    if (options.noLimiter) object["surround_limiter"] = 0;
    if (options.voice) object["dialoguenhance_voice"] = *options.voice;
    if (options.dump) object["enable_dump"] = true;
    object[effect.enableOption] = true;
    return object.dump();
}

}  // namespace sonivex_tool
