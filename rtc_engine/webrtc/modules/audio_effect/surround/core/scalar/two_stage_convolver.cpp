#include "two_stage_convolver.h"

#include <algorithm>

#include "response_length.h"
#include "spectrum_arithmetic.h"

namespace fftconvolver {

void TwoStageFFTConvolver::reset() {
    headBlockSize = 0;
    tailBlockSize = 0;
    headStage.reset();
    firstTailStage.reset();
    tailStage.reset();
    for (Buffer<float>* buffer :
         {&firstTailOutput, &firstTailReady, &tailOutput, &tailReady, &tailInput, &backgroundInput}) {
        buffer->resize(0);
    }
    tailInputFill = 0;
    readyPos = 0;
}

bool TwoStageFFTConvolver::init(std::size_t head, std::size_t tail, const float* ir, std::size_t irLen) {
    reset();
    if (head == 0 || tail == 0) return false;
    irLen = lengthWithoutSilentEnd(ir, irLen);
    if (irLen == 0) return true;

    headBlockSize = powerOfTwoNotBelow(std::min(head, tail));
    tailBlockSize = powerOfTwoNotBelow(std::max(head, tail));
    try {
        load(ir, irLen);
    } catch (...) {
        reset();
        throw;
    }
    return true;
}

void TwoStageFFTConvolver::load(const float* ir, std::size_t irLen) {
    const std::size_t T = tailBlockSize;
    headStage.init(headBlockSize, ir, std::min(irLen, T));
    if (irLen > T) {
        firstTailStage.init(headBlockSize, ir + T, std::min(irLen - T, T));
        firstTailOutput.resizeOrThrow(T);
        firstTailReady.resizeOrThrow(T);
    }
    if (irLen > 2 * T) {
        tailStage.init(T, ir + 2 * T, irLen - 2 * T);
        tailOutput.resizeOrThrow(T);
        tailReady.resizeOrThrow(T);
        backgroundInput.resizeOrThrow(T);
    }
    if (!firstTailReady.isEmpty() || !tailReady.isEmpty()) tailInput.resizeOrThrow(T);
}

void TwoStageFFTConvolver::process(const float* in, float* out, std::size_t len) {
    headStage.process(in, out, len);
    if (tailInput.isEmpty()) return;
    std::size_t done = 0;
    while (done < len) {
        const std::size_t until_next_head_block = headBlockSize - tailInputFill % headBlockSize;
        const std::size_t n = std::min(until_next_head_block, len - done);
        processTails(in + done, out + done, n);
        done += n;
    }
}

// Processes `n` samples, at most up to the end of a head block.
void TwoStageFFTConvolver::processTails(const float* in, float* out, std::size_t n) {
    if (!firstTailReady.isEmpty()) Sum(out, out, firstTailReady.data() + readyPos, n);
    if (!tailReady.isEmpty()) Sum(out, out, tailReady.data() + readyPos, n);
    readyPos += n;
    std::copy_n(in, n, tailInput.data() + tailInputFill);
    tailInputFill += n;
    const bool is_stretch_complete = tailInputFill == tailBlockSize;

    if (!firstTailReady.isEmpty() && tailInputFill % headBlockSize == 0) {
        const std::size_t block = tailInputFill - headBlockSize;
        firstTailStage.process(tailInput.data() + block, firstTailOutput.data() + block, headBlockSize);
        if (is_stretch_complete) firstTailReady.swap(firstTailOutput);
    }
    if (!tailReady.isEmpty() && is_stretch_complete) {
        waitForBackgroundProcessing();
        tailReady.swap(tailOutput);
        std::copy_n(tailInput.data(), tailBlockSize, backgroundInput.data());
        startBackgroundProcessing();
    }
    if (is_stretch_complete) {
        tailInputFill = 0;
        readyPos = 0;
    }
}

void TwoStageFFTConvolver::startBackgroundProcessing() {
    tailStage.process(backgroundInput.data(), tailOutput.data(), tailBlockSize);
}

void TwoStageFFTConvolver::waitForBackgroundProcessing() {}

}  // namespace fftconvolver
