// Tells the player how late the selected effect is, and for how long it sounds on.

#include "SonivexFilter.h"
#include "effects.h"

namespace Vorlin {

FilterTiming sonivexFilter::timing(const IQFFrame::audioInfo& stream) const {
    const EffectRecord* effect = selectedEffect();
    if (effect == nullptr || !isSupportedStream(*effect, stream.channels, stream.sample_rate)) return {};
    const sonivex::EffectTiming timing = effect->timing(*this, stream.channels, stream.sample_rate);
    return {.effect = effect->precedence,
            .block_frames = timing.block_frames,
            .own_delay_frames = timing.own_delay_frames,
            .tail_frames = timing.tail_frames};
}

}  // namespace Vorlin
