#pragma once

#include "audio_spec.h"

namespace sonivex_tool {

/** Converts frames of any spec to one spec with libswresample.
 *
 * Frames that already have the target spec pass through unchanged. The input's spec may change at any frame.
 * The samples that the resampler still holds then come out first. */
class FormatConverter {
  public:
    /** @param target spec of every frame that `convert` and `flush` return */
    explicit FormatConverter(const AudioSpec& target) : target_(target) {}

    /** The target spec. */
    const AudioSpec& target() const { return target_; }

    /** Converts a frame and takes ownership of it. A converted frame loses its pts.
     * @return the converted frame, or null while the resampler holds all of it
     * @throw std::bad_alloc; Failure (Internal) when libswresample cannot convert it */
    FramePtr convert(FramePtr frame);

    /** Returns the samples that the resampler still holds, or null if there are none.
     * @throw as `convert` does */
    FramePtr flush();

  private:
    void open(const AudioSpec& source);
    FramePtr run(const AVFrame* input);

    AudioSpec target_;
    AudioSpec source_;
    ResamplerPtr resampler_;
};

}  // namespace sonivex_tool
