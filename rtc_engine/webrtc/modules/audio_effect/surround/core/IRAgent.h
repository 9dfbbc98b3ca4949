// The convolver of one impulse response, for one pair of a source and an ear. It is the scalar reference: the
// shipped path runs banks (convolution/), which match it bit for bit. layouts.h numbers the agents, and
// source.h tells which lane of a bank stands for which agent.
//
// Use: IRAgent agent; agent.init(256, 12768, ir, 8640); agent.process(in, out, n) for every call.
#pragma once

#include <cstddef>

#include "two_stage_convolver.h"

/** One scalar convolver. One thread at a time uses an object. */
class IRAgent {
  public:
    IRAgent() = default;
    IRAgent(const IRAgent&) = delete;
    IRAgent& operator=(const IRAgent&) = delete;
    virtual ~IRAgent() = default;

    /** Loads a response, see TwoStageFFTConvolver::init. [any] not real-time safe: allocates */
    bool init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen);

    /** Convolves the next samples. The output is silence before init.
     *  @param in, out [len] samples; `out` is overwritten and must not overlap `in`.
     *  @param len     not negative.
     *  [any] real-time safe */
    void process(const float* in, float* out, int len);

    /** The convolver, owned by the agent. [any] real-time safe */
    const fftconvolver::TwoStageFFTConvolver& stages() const { return convolver; }

  private:
    fftconvolver::TwoStageFFTConvolver convolver;
};
