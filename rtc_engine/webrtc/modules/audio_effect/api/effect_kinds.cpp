#include "effect_kinds.h"

#include "kind_records.h"
#include "sonivex/effect.h"

namespace sonivex {

const EffectKind* findEffectKind(int kind) {
    switch (kind) {
#if SONIVEX_HAS_SURROUND
        case SONIVEX_SURROUND:
            return &kSurroundKind;
#endif
#if SONIVEX_HAS_DIALOGUE
        case SONIVEX_DIALOGUE:
            return &kDialogueKind;
#endif
#if SONIVEX_HAS_NORMALIZER
        case SONIVEX_NORMALIZER:
            return &kNormalizerKind;
#endif
        default:
            return nullptr;
    }
}

}  // namespace sonivex
