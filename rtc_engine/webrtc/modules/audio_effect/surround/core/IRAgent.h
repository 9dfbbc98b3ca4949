// One impulse response at work, for one pair of a source and an ear: the scalar definition of right. The
// shipped path runs banks of them (convolution/), held to this bit for bit; layouts.h tells which lane of a
// bank stands for which agent.
#pragma once

#include <cstddef>

#include "two_stage_convolver.h"

class IRAgent {
  public:
    IRAgent() = default;
    IRAgent(const IRAgent&) = delete;
    IRAgent& operator=(const IRAgent&) = delete;
    virtual ~IRAgent() = default;

    /** As TwoStageFFTConvolver::init. */
    bool init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen);

    /** Convolve `len` samples, not negative, of `in` into `out`, which is overwritten and must not overlap.
     *  Real-time safe. Silence before init. */
    void process(const float* in, float* out, int len);

    const fftconvolver::TwoStageFFTConvolver& stages() const { return convolver; }

  private:
    fftconvolver::TwoStageFFTConvolver convolver;
};
