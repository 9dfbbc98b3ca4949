// Convolution with a long response: short partitions convolve its head without delay, long partitions its
// tail. Part of the scalar reference: the head stage holds every shipped response whole, and the banks of the
// shipped path (convolution/) match that stage bit for bit.
//
//   response   [0, T)     [T, 2T)            [2T, ..)
//   stage      head       first tail         tail
//   partition  H          H                  T
//
// The tail stages work on input that is T samples old: the result that they compute while one stretch of T
// samples comes in is played out during the next stretch.
//
// Use: TwoStageFFTConvolver c; c.init(256, 12768, ir, 40000); c.process(in, out, n) for every call.
// Threads: one thread at a time uses an object.
#pragma once

#include <cstddef>

#include "buffer.h"
#include "fftconvolver.h"

namespace fftconvolver {

/** A convolver with a head stage and two tail stages. It is silent until a response is loaded. */
class TwoStageFFTConvolver {
  public:
    TwoStageFFTConvolver() = default;
    TwoStageFFTConvolver(const TwoStageFFTConvolver&) = delete;
    TwoStageFFTConvolver& operator=(const TwoStageFFTConvolver&) = delete;
    virtual ~TwoStageFFTConvolver() = default;

    /** Drops the loaded response, loads a new one and starts from silence.
     *  @param head, tail samples of a partition of the stages, rounded up to powers of two. The head stage
     *                    gets the smaller of the two.
     *  @param ir         [irLen], copied; taps below 1e-6 at its end are left out. If nothing is left, the
     *                    output is silence.
     *  @return false if a size is 0; the output is then silence.
     *  Throws std::bad_alloc when memory runs out; the output is then silence.
     *  [any] not real-time safe: allocates */
    bool init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen);

    /** Convolves the next samples. The output is silence without a response.
     *  @param in, out [len] samples; `out` is overwritten and must not overlap `in`.
     *  [any] real-time safe */
    void process(const float* in, float* out, std::size_t len);

    /** H; 0 without a response. [any] real-time safe */
    std::size_t headPartitionLength() const { return headBlockSize; }
    /** T; 0 without a response. [any] real-time safe */
    std::size_t tailPartitionLength() const { return tailBlockSize; }
    /** The head stage. [any] real-time safe */
    const FFTConvolver& head() const { return headStage; }
    /** The first tail stage. [any] real-time safe */
    const FFTConvolver& firstTail() const { return firstTailStage; }
    /** The tail stage. [any] real-time safe */
    const FFTConvolver& tail() const { return tailStage; }

  protected:
    /** Computes tailOutput from backgroundInput. This version does so at once, on the calling thread.
     *  [any] real-time safe */
    virtual void startBackgroundProcessing();
    /** Returns when tailOutput is complete. [any] real-time safe */
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
    Buffer<float> tailOutput;  // played out next
    Buffer<float> tailReady;   // being played out
    Buffer<float> tailInput;   // latest input, up to T samples
    std::size_t tailInputFill = 0;
    std::size_t readyPos = 0;
    Buffer<float> backgroundInput;  // the stretch that tailStage works on
};

}  // namespace fftconvolver
