// Convolution of a stream with a fixed response, by uniform partitions of both in the frequency domain: the
// scalar reference. The shipped path runs banks of such convolvers (convolution/) and matches it bit for bit.
//
//   L          partition length, P partitions of the response, transforms of 2L
//   H[i]       spectrum of samples iL .. iL+L-1 of the response, followed by zeros
//   X[b]       spectrum of input block b, followed by zeros; an unfinished block is transformed as it is
//   y          = inverse of sum over i of H[i] X[b-i];  its second half is added to the next block's first
//
// Every output sample depends on the input up to the same instant: there is no delay, for any call length.
// The sum over the older blocks, i >= 1, is computed once per block and kept.
// Source: overlap-add with a frequency-domain delay line, Gardner, JAES 43 (1995); Wefers (2015).
//
// Use: FFTConvolver c; c.init(256, ir, 8640); c.process(in, out, n) for every call.
// Threads: one thread at a time uses an object.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "audiofft.h"
#include "buffer.h"

namespace fftconvolver {

/** A convolver with uniform partitions. It is silent until a response is loaded. */
class FFTConvolver {
  public:
    FFTConvolver() = default;
    FFTConvolver(const FFTConvolver&) = delete;
    FFTConvolver& operator=(const FFTConvolver&) = delete;
    virtual ~FFTConvolver() = default;

    /** Drops the loaded response, loads a new one and starts from silence.
     *  @param new_block_size samples of a partition, rounded up to a power of two.
     *  @param ir             [irLen], copied; taps below 1e-6 at its end are left out. If nothing is left,
     *                        the output is silence.
     *  @return false for a block size of 0; the output is then silence.
     *  Throws std::bad_alloc when memory runs out; the output is then silence.
     *  [any] not real-time safe: allocates */
    bool init(std::size_t new_block_size, const float* ir, std::size_t irLen);

    /** Convolves the next samples. The output is silence without a response.
     *  @param in, out [len] samples; `out` is overwritten and may be `in`.
     *  [any] real-time safe */
    void process(const float* in, float* out, std::size_t len);

    /** Drops the response and frees the memory. [any] not real-time safe */
    void reset();

    /** Samples of a partition; 0 without a response. [any] real-time safe */
    std::size_t partitionLength() const { return blockSize; }
    /** Partitions of the response; 0 without a response. [any] real-time safe */
    std::size_t partitionCount() const { return segmentCount; }

  private:
    using Spectra = std::vector<std::unique_ptr<SplitComplex>>;

    void transformResponse(const float* ir, std::size_t irLen, std::size_t partitions);
    void transformInput();
    void accumulateOlderBlocks();
    void finishBlock();

    std::size_t blockSize = 0;     // L
    std::size_t segmentSize = 0;   // 2L
    std::size_t segmentCount = 0;  // P
    std::size_t complexSize = 0;   // L + 1 bins
    Spectra inputSegments;         // ring of input spectra
    Spectra irSegments;            // the response's partitions
    Buffer<float> fftBuffer;       // 2L samples, input or output of a transform
    audiofft::AudioFFT fft;
    SplitComplex accumulated;  // sum of the older blocks
    SplitComplex convolved;    // that sum plus the newest block
    Buffer<float> overlap;     // second half of the last finished block's inverse transform
    std::size_t current = 0;   // index of the newest block in the ring; older blocks follow
    Buffer<float> inputBuffer;
    std::size_t inputFill = 0;
};

}  // namespace fftconvolver
