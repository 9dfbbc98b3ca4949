#include "effect_choice.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace sonivex_tool {
namespace {

constexpr char kMegaBass[] = "MegaBass";
constexpr char k3DSurround[] = "3DSurround";
constexpr int kModes = 3;

bool has(const EffectChoice& choice, const char* name) {
    return std::any_of(choice.chain.begin(), choice.chain.end(),
                       [name](const Effect* effect) { return effect->name == name; });
}

std::string optionsOf(const Effect& effect, const FilterOptions& options) {
    if (effect.name == "surround") {
        const std::string type = options.surround_type.value_or(k3DSurround);
        const std::string limiter = options.no_limiter ? ", no limiter" : "";
        if (type != kMegaBass) return " (" + type + limiter + ")";
        return " (" + type + ", mode " + std::to_string(options.surround_mode.value_or(1)) + limiter + ")";
    }
    if (effect.name == "dialogue") {
        std::array<char, 48> text{};
        (void)std::snprintf(text.data(), text.size(), " (voice %.4g)", options.voice.value_or(1.0));
        return text.data();
    }
    return {};
}

}  // namespace

std::string describe(const EffectChoice& choice) {
    std::string text;
    for (const Effect* effect : choice.chain) {
        if (!text.empty()) text += ", ";
        text += effect->name + optionsOf(*effect, choice.options);
    }
    return text;
}

EffectChoice withNextEffect(EffectChoice choice, const std::vector<std::vector<const Effect*>>& chains) {
    const auto current = std::find(chains.begin(), chains.end(), choice.chain);
    if (chains.empty()) return choice;
    const bool is_last = current == chains.end() || current + 1 == chains.end();
    choice.chain = is_last ? chains.front() : *(current + 1);
    return choice;
}

std::optional<EffectChoice> withNextType(EffectChoice choice) {
    if (!has(choice, "surround")) return std::nullopt;
    const bool is_megabass = choice.options.surround_type == kMegaBass;
    choice.options.surround_type = is_megabass ? k3DSurround : kMegaBass;
    return choice;
}

std::optional<EffectChoice> withNextMode(EffectChoice choice) {
    if (!has(choice, "surround") || choice.options.surround_type != kMegaBass) return std::nullopt;
    choice.options.surround_mode = choice.options.surround_mode.value_or(1) % kModes + 1;
    return choice;
}

std::optional<EffectChoice> withVoice(EffectChoice choice, double step) {
    if (!has(choice, "dialogue")) return std::nullopt;
    choice.options.voice = std::clamp(choice.options.voice.value_or(1.0) + step, 1.0, kHighestVoiceByKey);
    return choice;
}

}  // namespace sonivex_tool
