#include "fftconvolver.h"

#include <algorithm>

#include "response_length.h"
#include "spectrum_arithmetic.h"

namespace fftconvolver {

void FFTConvolver::reset() {
    inputSegments.clear();
    irSegments.clear();
    blockSize = 0;
    segmentSize = 0;
    segmentCount = 0;
    complexSize = 0;
    current = 0;
    inputFill = 0;
    fftBuffer.resize(0);
    overlap.resize(0);
    inputBuffer.resize(0);
    accumulated.resize(0);
    convolved.resize(0);
    fft.init(0);
}

bool FFTConvolver::init(std::size_t new_block_size, const float* ir, std::size_t irLen) {
    reset();
    if (new_block_size == 0) return false;
    irLen = lengthWithoutSilentEnd(ir, irLen);
    if (irLen == 0) return true;

    blockSize = powerOfTwoNotBelow(new_block_size);
    segmentSize = 2 * blockSize;
    complexSize = audiofft::AudioFFT::ComplexSize(segmentSize);
    fft.init(segmentSize);
    fftBuffer.resizeOrThrow(segmentSize);

    const std::size_t partitions = partitionsOf(irLen, blockSize);
    inputSegments.reserve(partitions);
    for (std::size_t i = 0; i < partitions; ++i) {
        inputSegments.push_back(std::make_unique<SplitComplex>(complexSize));
    }
    transformResponse(ir, irLen, partitions);

    accumulated.resize(complexSize);
    convolved.resize(complexSize);
    overlap.resizeOrThrow(blockSize);
    inputBuffer.resizeOrThrow(blockSize);
    segmentCount = partitions;  // set last: a convolver stays silent if memory ran out above
    return true;
}

void FFTConvolver::transformResponse(const float* ir, std::size_t irLen, std::size_t partitions) {
    irSegments.reserve(partitions);
    for (std::size_t i = 0; i < partitions; ++i) {
        // partitionsOf computes in float: beyond 2^24 taps its count may be off by one.
        const std::size_t first = std::min(i * blockSize, irLen);
        const std::size_t taps = std::min(irLen - first, blockSize);
        fftBuffer.clear();
        std::copy_n(ir + first, taps, fftBuffer.data());
        auto spectrum = std::make_unique<SplitComplex>(complexSize);
        fft.fft(fftBuffer.data(), spectrum->re(), spectrum->im());
        irSegments.push_back(std::move(spectrum));
    }
}

void FFTConvolver::process(const float* in, float* out, std::size_t len) {
    if (segmentCount == 0) {
        std::fill_n(out, len, 0.0F);
        return;
    }
    std::size_t done = 0;
    while (done < len) {
        const std::size_t pos = inputFill;
        const std::size_t n = std::min(blockSize - pos, len - done);
        std::copy_n(in + done, n, inputBuffer.data() + pos);
        transformInput();
        if (pos == 0) accumulateOlderBlocks();

        std::copy_n(accumulated.re(), complexSize, convolved.re());
        std::copy_n(accumulated.im(), complexSize, convolved.im());
        ComplexMultiplyAccumulate(convolved, *inputSegments[current], *irSegments[0]);
        fft.ifft(fftBuffer.data(), convolved.re(), convolved.im());

        Sum(out + done, fftBuffer.data() + pos, overlap.data() + pos, n);
        inputFill += n;
        if (inputFill == blockSize) finishBlock();
        done += n;
    }
}

// Transforms the block as far as it is filled; the rest of its buffer is zero.
void FFTConvolver::transformInput() {
    std::copy_n(inputBuffer.data(), blockSize, fftBuffer.data());
    std::fill_n(fftBuffer.data() + blockSize, segmentSize - blockSize, 0.0F);
    SplitComplex& spectrum = *inputSegments[current];
    fft.fft(fftBuffer.data(), spectrum.re(), spectrum.im());
}

void FFTConvolver::accumulateOlderBlocks() {
    accumulated.clear();
    for (std::size_t i = 1; i < segmentCount; ++i) {
        const std::size_t age_i = (current + i) % segmentCount;
        ComplexMultiplyAccumulate(accumulated, *irSegments[i], *inputSegments[age_i]);
    }
}

void FFTConvolver::finishBlock() {
    inputBuffer.clear();
    inputFill = 0;
    std::copy_n(fftBuffer.data() + blockSize, blockSize, overlap.data());
    current = current == 0 ? segmentCount - 1 : current - 1;
}

}  // namespace fftconvolver
