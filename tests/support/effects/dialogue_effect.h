#pragma once

#include "sonivex/dialoguenhance.h"
#include "support/effects/dialogue_settings.h"
#include "support/effects/effect.h"

namespace test {

/** Block length of dialogue enhancement at a sample rate, in frames. */
inline int hopFrames(int rate_hz) {
    return rate_hz <= 50000 ? 512 : rate_hz <= 100000 ? 1024 : 2048;
}

/** Dialogue enhancement. Its input and output are stereo, whatever channel count it is created for. */
class DialogueEffect final : public Effect {
  public:
    explicit DialogueEffect(const DialogueSettings& settings = {})
        : Effect(aem_CreateDialoguEnhance(settings.channels, settings.rate_hz, settings.gain_floor,
                                          settings.gain_scale, settings.voice_level),
                 aem_ReleaseDialoguEnhance, 2, 2),
          rate_hz_(settings.rate_hz) {}

  private:
    int call(const short* in, short* out, int frames) override {
        return aem_ProcessDialoguEnhance(handle(), in, out, frames, rate_hz_);
    }

    int rate_hz_;
};

}  // namespace test
