/* The convolver that fftconvolver.h describes, one response at a time and without vectors: what the library's
 * must equal to the bit. */
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "audiofft.h"
#include "buffer.h"

namespace model {

class ScalarConvolver {
  public:
    /** As FFTConvolver::init. */
    bool init(std::size_t new_block_size, const float* ir, std::size_t irLen);

    /** As FFTConvolver::process. */
    void process(const float* in, float* out, std::size_t len);

    void reset();

  private:
    using SplitComplex = fftconvolver::SplitComplex;
    template <typename Number>
    using Buffer = fftconvolver::Buffer<Number>;
    using Spectra = std::vector<std::unique_ptr<SplitComplex>>;

    void transformResponse(const float* ir, std::size_t irLen, std::size_t partitions);
    void transformInput();
    void accumulateOlderBlocks();
    void finishBlock();

    std::size_t blockSize = 0;
    std::size_t segmentSize = 0;
    std::size_t segmentCount = 0;
    std::size_t complexSize = 0;
    Spectra inputSegments;    // ring of the input blocks' spectra
    Spectra irSegments;       // the response's partitions
    Buffer<float> fftBuffer;  // 2L samples on the way into or out of a transform
    audiofft::AudioFFT fft;
    SplitComplex accumulated;  // contribution of the older blocks
    SplitComplex convolved;    // the same and that of the newest
    Buffer<float> overlap;     // second half of the last finished block's inverse transform
    std::size_t current = 0;   // place of the newest block in the ring; the older ones follow
    Buffer<float> inputBuffer;
    std::size_t inputFill = 0;
};

}  // namespace model
