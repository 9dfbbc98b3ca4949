// Convolution with a long response: its head in short partitions without delay, its tail in long ones. Part
// of the scalar definition of right: the shipped path runs banks (convolution/), held bit for bit to the head
// stage, which holds every response that ships whole.
//
//   response   [0, T)     [T, 2T)            [2T, ..)
//   stage      head       first tail         tail
//   partition  H          H                  T
//
// The tail stages work on input of T samples ago, so what they compute while one stretch of T samples comes
// in is played out during the next.
//
// Use: TwoStageFFTConvolver c; c.init(256, 12768, ir, 40000); c.process(in, out, n) for every call.
// Threads: an object is used by one thread at a time.
#pragma once

#include <cstddef>

#include "buffer.h"
#include "fftconvolver.h"

namespace fftconvolver {

class TwoStageFFTConvolver {
  public:
    TwoStageFFTConvolver() = default;
    TwoStageFFTConvolver(const TwoStageFFTConvolver&) = delete;
    TwoStageFFTConvolver& operator=(const TwoStageFFTConvolver&) = delete;
    virtual ~TwoStageFFTConvolver() = default;

    /** Load a response; what was loaded is dropped first.
     *  @param head, tail samples of a partition of either stage, rounded up to powers of two; the smaller one
     *                    is the head's.
     *  @param ir         [irLen], copied; taps below 1e-6 at its end are left out. If nothing is left, the
     *                    output is silence.
     *  @return false, and the output is silence, if a size is 0.
     *  Throws std::bad_alloc, and the output is silence, when memory runs out. */
    bool init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen);

    /** @param in, out [len]; `out` is overwritten and must not overlap `in`.
     *  Real-time safe. Silence without a response. */
    void process(const float* in, float* out, std::size_t len);

    /** H and T; 0 without a response. */
    std::size_t headPartitionLength() const { return headBlockSize; }
    std::size_t tailPartitionLength() const { return tailBlockSize; }
    const FFTConvolver& head() const { return headStage; }
    const FFTConvolver& firstTail() const { return firstTailStage; }
    const FFTConvolver& tail() const { return tailStage; }

  protected:
    /** Compute tailOutput from backgroundInput: here at once, on the calling thread. */
    virtual void startBackgroundProcessing();
    /** Come back when tailOutput is complete. */
    virtual void waitForBackgroundProcessing();

  private:
    void reset();
    void load(const float* ir, std::size_t irLen);
    void processTails(const float* in, float* out, std::size_t n);

    std::size_t headBlockSize = 0;
    std::size_t tailBlockSize = 0;
    FFTConvolver headStage;
    FFTConvolver firstTailStage;
    Buffer<float> firstTailOutput;  // being computed, H samples at a time
    Buffer<float> firstTailReady;   // being played out
    FFTConvolver tailStage;
    Buffer<float> tailOutput;  // computed, to be played out next
    Buffer<float> tailReady;   // being played out
    Buffer<float> tailInput;   // the last input samples, T at most
    std::size_t tailInputFill = 0;
    std::size_t readyPos = 0;
    Buffer<float> backgroundInput;  // the stretch that tailStage works on
};

}  // namespace fftconvolver
