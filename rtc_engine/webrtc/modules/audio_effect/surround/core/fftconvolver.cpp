#include "fftconvolver.h"

#include <algorithm>

#include "response_length.h"

namespace fftconvolver {

void FFTConvolver::reset() {
    bank.reset();
    workspace.reset();
    blockSize = 0;
    segmentCount = 0;
}

bool FFTConvolver::init(std::size_t new_block_size, const float* ir, std::size_t irLen) {
    reset();
    if (new_block_size == 0) return false;
    irLen = lengthWithoutSilentEnd(ir, irLen);
    if (irLen == 0) return true;

    const std::size_t block_size = powerOfTwoNotBelow(new_block_size);
    const std::size_t partitions = partitionsOf(irLen, block_size);
    auto new_workspace = std::make_unique<ConvolutionWorkspace>(block_size, BankShape{});
    const Taps response = {ir, irLen};
    bank = std::make_unique<ConvolutionBank>(BankShape{}, &response, partitions, *new_workspace);
    workspace = std::move(new_workspace);
    blockSize = block_size;
    segmentCount = partitions;
    return true;
}

void FFTConvolver::process(const float* in, float* out, std::size_t len) {
    if (bank == nullptr) {
        std::fill_n(out, len, 0.0F);
        return;
    }
    bank->process({.first = {in}, .stride = 1}, out, len, ConvolutionBank::Mixing::kSet, *workspace);
}

}  // namespace fftconvolver
