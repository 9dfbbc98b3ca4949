#pragma once

#include <optional>
#include <string>
#include <vector>

#include "effect.h"

namespace sonivex_tool {

/** An effect, or several in a row, and their options. */
struct EffectChoice {
    std::vector<const Effect*> chain;  // at least one
    FilterOptions options;
};

/** Describes a choice for the user: "surround (MegaBass, mode 2)". */
std::string describe(const EffectChoice& choice);

// Each of these functions returns the choice that follows the one given, or nothing if no effect of its chain
// has the option.

/** Another effect of `chains`, in their order and then from the first again. */
EffectChoice withNextEffect(EffectChoice choice, const std::vector<std::vector<const Effect*>>& chains);
/** The other type of surround. */
std::optional<EffectChoice> withNextType(EffectChoice choice);
/** The next mode of MegaBass. */
std::optional<EffectChoice> withNextMode(EffectChoice choice);
/** Dialogue enhancement with its voice level changed by `step`, from 1 to kHighestVoice. */
std::optional<EffectChoice> withVoice(EffectChoice choice, double step);

/** The highest voice level to which keys lead. */
inline constexpr double kHighestVoiceByKey = 20.0;

}  // namespace sonivex_tool
