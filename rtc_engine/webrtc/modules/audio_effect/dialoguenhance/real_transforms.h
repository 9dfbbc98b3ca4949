// Real Fourier transforms by libavutil, of N real samples to N/2 + 1 bins and back.
//
//   forward:  X[k] = sum over n of x[n] * exp(-2 pi i k n / N)
//   inverse:  the way back, including the factor 1/N
//
// Arrays come from av_array.h and must not overlap. Running is real-time safe; the last bits of the results
// depend on the processor.
#pragma once

extern "C" {
#include <libavutil/tx.h>
}

#include <memory>

#include "bin.h"

namespace sonivex {

struct UninitTransform {
    void operator()(AVTXContext* context) const { av_tx_uninit(&context); }
};
using TransformContext = std::unique_ptr<AVTXContext, UninitTransform>;

class ForwardTransform {
  public:
    /** @param points a power of two. @return false when memory runs out. */
    bool init(int points);
    /** @param frame N samples; may be overwritten.  @param spectrum N/2 + 1 bins. */
    void run(float* frame, Bin* spectrum) const;

  private:
    TransformContext context_;
    av_tx_fn run_ = nullptr;
};

class InverseTransform {
  public:
    /** @param points a power of two. @return false when memory runs out. */
    bool init(int points);
    /** @param spectrum N/2 + 1 bins, which are destroyed.  @param frame N samples. */
    void run(Bin* spectrum, float* frame) const;

  private:
    TransformContext context_;
    av_tx_fn run_ = nullptr;
};

}  // namespace sonivex
