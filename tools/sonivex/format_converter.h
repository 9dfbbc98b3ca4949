#pragma once

#include "audio_spec.h"

namespace sonivex_tool {

/** Turns frames of any kind into frames of one kind, through libswresample. Frames that are of that kind
 * already pass untouched. The input may change at any frame; what the resampler still holds comes out before.
 */
class FormatConverter {
  public:
    explicit FormatConverter(const AudioSpec& target) : target_(target) {}

    const AudioSpec& target() const { return target_; }

    /** @return the converted frame; null when the resampler keeps all of it for now. pts is not kept.
     *  @throw std::bad_alloc, Failure (Internal) when libswresample cannot do it */
    FramePtr convert(FramePtr frame);

    /** What the resampler still holds, or null. */
    FramePtr flush();

  private:
    void open(const AudioSpec& source);
    FramePtr run(const AVFrame* input);

    AudioSpec target_;
    AudioSpec source_;
    ResamplerPtr resampler_;
};

}  // namespace sonivex_tool
