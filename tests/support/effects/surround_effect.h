#pragma once

#include <algorithm>
#include <cstddef>

#include "sonivex/surround.h"
#include "support/effects/effect.h"

namespace test {

/** Returns the samples in an input frame of surround for this layout: the effect takes mono as two
 *  channels. */
inline std::size_t surroundWidth(int channels) {
    return static_cast<std::size_t>(std::max(channels, 2));
}

/** Converts a stream of `channels` to the input of surround: mono goes to both channels, as in the filter. */
inline Pcm surroundInput(const Pcm& samples, int channels) {
    return channels == 1 ? widened(samples) : samples;
}

/** Surround. Its input has surroundWidth(channels) samples in a frame, its output is stereo. */
class SurroundEffect final : public Effect {
  public:
    /** The arguments are those of aem_CreateSurround. */
    SurroundEffect(int channels, int type, int mode = 1, int limiter = 1, int rate_hz = 48000)
        : Effect(aem_CreateSurround(channels, rate_hz, type, mode, limiter), aem_ReleaseSurround,
                 surroundWidth(channels), 2) {}

  private:
    int call(const short* in, short* out, int frames) override {
        return aem_ProcessSurround(handle(), in, out, frames);
    }
};

}  // namespace test
