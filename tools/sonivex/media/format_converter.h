#pragma once

#include <cstdint>
#include <optional>

#include "audio_spec.h"
#include "quantiser.h"

namespace sonivex_tool {

/** How samples are converted. */
struct ConverterOptions {
    bool dither = true;       // when the samples get fewer bits; see quantiser.h
    int bits = 0;             // significant bits of the target, if fewer than its format has, else 0
    int precision_bits = 28;  // of the resampler, if it is soxr: 15 to 32; 28 rejects by 169 dB
    bool use_soxr = true;     // as the resampler, if libswresample was built with it
};

/** Converts frames of any spec to one spec.
 *
 *  libswresample converts in double precision. Layouts are mixed by the names of their loudspeakers (see
 *  mixing_matrix.h). Samples that get fewer bits are rounded, with dither (see quantiser.h). A change of rate
 *  keeps every sample's time, and n frames become n times the ratio of the rates, rounded.
 *
 *  Frames that already have the target spec pass through unchanged. The input's spec may change at any frame.
 *  The samples that the resampler still holds then come out first. */
class FormatConverter {
  public:
    /** @param target spec of every frame that `convert` and `flush` return */
    explicit FormatConverter(const AudioSpec& target, const ConverterOptions& options = {});

    /** The target spec. */
    const AudioSpec& target() const { return target_; }

    /** Converts a frame and takes ownership of it. A converted frame loses its pts.
     * @return the converted frame, or null while the resampler holds all of it
     * @throw std::bad_alloc; Failure (Internal) when libswresample cannot convert it */
    FramePtr convert(FramePtr frame);

    /** Returns the samples that the resampler still holds, or null if there are none.
     * @throw as `convert` does */
    FramePtr flush();

    /** Returns how many samples above full scale were clipped so far, each channel counted. It counts only
     *  samples that get fewer bits. */
    uint64_t clippedSamples() const { return quantiser_.has_value() ? quantiser_->clippedSamples() : 0; }

  private:
    bool needsQuantiser(const AudioSpec& source) const;
    void open(const AudioSpec& source);
    int initialise(const AudioSpec& source, bool use_soxr);
    FramePtr silence() const;
    FramePtr run(const AVFrame* input, int counted_frames);
    FramePtr limitedToLength(FramePtr output);

    AudioSpec target_;
    ConverterOptions options_;
    AudioSpec source_;
    AudioSpec resampled_;  // what libswresample returns
    bool quantises_ = false;
    ResamplerPtr resampler_;
    std::optional<Quantiser> quantiser_;
    int64_t input_frames_ = 0;  // since the resampler was opened
    int64_t output_frames_ = 0;
};

}  // namespace sonivex_tool
