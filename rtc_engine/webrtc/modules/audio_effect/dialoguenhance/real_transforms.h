// Real Fourier transforms by libavutil, from N real samples to N/2 + 1 bins and back.
//
//   forward:  X[k] = sum over n of x[n] * exp(-2 pi i k n / N)
//   inverse:  with the factor 1/N, so that a round trip restores x
//
// Arrays come from av_array.h and must not overlap. The last bits of the results depend on the processor.
//
// Use: call init once, then run for every frame.
#pragma once

extern "C" {
#include <libavutil/tx.h>
}

#include <memory>

#include "bin.h"

namespace sonivex {

/** Deleter of a TransformContext. */
struct UninitTransform {
    /** Frees a transform.
     *  [any] not real-time safe (frees memory) */
    void operator()(AVTXContext* context) const { av_tx_uninit(&context); }
};
/** A transform that frees itself. */
using TransformContext = std::unique_ptr<AVTXContext, UninitTransform>;

/** Transform from samples to bins. */
class ForwardTransform {
  public:
    /** @param points N, a power of two.
     *  @return false when memory runs out.
     *  [any] not real-time safe (allocates) */
    bool init(int points);
    /** Transforms one frame.
     *  @param frame    N samples; may be overwritten.
     *  @param spectrum receives N/2 + 1 bins.
     *  [any] real-time safe */
    void run(float* frame, Bin* spectrum) const;

  private:
    TransformContext context_;
    av_tx_fn run_ = nullptr;
};

/** Transform from bins to samples. */
class InverseTransform {
  public:
    /** @param points N, a power of two.
     *  @return false when memory runs out.
     *  [any] not real-time safe (allocates) */
    bool init(int points);
    /** Transforms one spectrum.
     *  @param spectrum N/2 + 1 bins; the call destroys them.
     *  @param frame    receives N samples.
     *  [any] real-time safe */
    void run(Bin* spectrum, float* frame) const;

  private:
    TransformContext context_;
    av_tx_fn run_ = nullptr;
};

}  // namespace sonivex
