// The record of each kind of effect. Each stands in a file of its own, NAME_kind.cpp, which the build leaves
// out with its effect.
#pragma once

#include "effect_kinds.h"

namespace sonivex {

extern const EffectKind kSurroundKind;
extern const EffectKind kDialogueKind;
extern const EffectKind kNormalizerKind;

/** Lowest sample rate in Hz of dialogue enhancement and of the normalizer. */
inline constexpr int kLowestRate_hz = 8000;
/** Highest sample rate in Hz of dialogue enhancement and of the normalizer. */
inline constexpr int kHighestRate_hz = 192000;

/** True for the rates of dialogue enhancement and of the normalizer. [any, concurrent] real-time safe */
constexpr bool isUsualRate(int rate_hz) {
    return rate_hz >= kLowestRate_hz && rate_hz <= kHighestRate_hz;
}

}  // namespace sonivex
