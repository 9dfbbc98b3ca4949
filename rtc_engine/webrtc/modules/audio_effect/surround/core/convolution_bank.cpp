#include "convolution_bank.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "float_rules.h"

namespace fftconvolver {
namespace {

constexpr std::size_t kBlocksAtOnce = 2;

std::size_t tilesOf(const BankShape& shape, std::size_t block_frames) {
    return (shape.channels * block_frames + kTileFloats - 1) / kTileFloats;
}

/* Real and imaginary parts one behind the other. */
LanePlanes planesAt(float* memory, std::size_t plane_floats) {
    return {memory, memory + plane_floats};
}

/* Outputs [frame][term][ear] at distances of their own: what the terms of a frame are multiples of. */
struct Outputs {
    const float* first;
    std::size_t frame_stride;
    std::size_t term_stride;
};

template <std::size_t terms, std::size_t ear_count>
void mixTerms(const Outputs& first_halves, const Outputs& second_halves, std::size_t frames, bool adds,
              float* __restrict ears) {
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const float* const a = first_halves.first + frame * first_halves.frame_stride;
        const float* const b = second_halves.first + frame * second_halves.frame_stride;
        for (std::size_t ear = 0; ear < ear_count; ++ear) {
            float& out = ears[frame * ear_count + ear];
            const float output = a[ear] + b[ear];
            float sum = adds ? out + output : output;
            if constexpr (terms == 2) {
                sum += a[first_halves.term_stride + ear] + b[second_halves.term_stride + ear];
            }
            out = sum;
        }
    }
}

/* Every output is the sum of two blocks that overlap: the first half of its own and the second half of the
 * block before. */
void mix(const BankShape& shape, const Outputs& first_halves, const Outputs& second_halves,
         std::size_t frames, bool adds, float* ears) {
    if (shape.responses() == 1) {
        mixTerms<1, 1>(first_halves, second_halves, frames, adds, ears);
    } else if (shape.responses() == 2) {
        mixTerms<1, 2>(first_halves, second_halves, frames, adds, ears);
    } else {
        mixTerms<2, 2>(first_halves, second_halves, frames, adds, ears);
    }
}

/* Whether all are zeros, of either sign: no other float has no bits below its sign. */
bool areZeros(const float* numbers, std::size_t count) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) bits |= std::bit_cast<std::uint32_t>(numbers[i]);
    return bits << 1 == 0;
}

/* From frame `from` on, to [frame][channel]. */
template <std::size_t channels>
void gather(const ConvolutionBank::Input& in, std::size_t from, std::size_t frames, float* to) {
    for (std::size_t i = 0; i < frames; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            to[i * channels + channel] = in.first[channel][(from + i) * in.stride];
        }
    }
}

void gather(const ConvolutionBank::Input& in, std::size_t channels, std::size_t from, std::size_t frames,
            float* to) {
    channels == 1 ? gather<1>(in, from, frames, to) : gather<2>(in, from, frames, to);
}

/* Two blocks to [frame][block][channel]; of the second only the first frames are given, zeros follow. */
template <std::size_t channels>
void interleaveBlocks(const float* first, const float* second, std::size_t frames_of_second,
                      std::size_t block_frames, float* __restrict to) {
    for (std::size_t i = 0; i < frames_of_second; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            to[2 * i * channels + channel] = first[i * channels + channel];
            to[(2 * i + 1) * channels + channel] = second[i * channels + channel];
        }
    }
    for (std::size_t i = frames_of_second; i < block_frames; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            to[2 * i * channels + channel] = first[i * channels + channel];
            to[(2 * i + 1) * channels + channel] = 0.0F;
        }
    }
}

/* To neighbours, [frame][term][ear]. */
template <std::size_t terms, std::size_t ear_count>
void packTerms(const Outputs& from, std::size_t frames, float* __restrict to) {
    const float* first = from.first;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t term = 0; term < terms; ++term) {
            for (std::size_t ear = 0; ear < ear_count; ++ear) {
                to[term * ear_count + ear] = first[term * from.term_stride + ear];
            }
        }
        first += from.frame_stride;
        to += terms * ear_count;
    }
}

void pack(const BankShape& shape, const Outputs& from, std::size_t frames, float* to) {
    if (shape.responses() == 1) {
        packTerms<1, 1>(from, frames, to);
    } else if (shape.responses() == 2) {
        packTerms<1, 2>(from, frames, to);
    } else {
        packTerms<2, 2>(from, frames, to);
    }
}

}  // namespace

ConvolutionWorkspace::ConvolutionWorkspace(std::size_t block_frames, const BankShape& largest)
    : tables(2 * block_frames), transform(audiofft::laneTransform()), arithmetic(bankArithmetic()) {
    const std::size_t points = 2 * block_frames;
    const std::size_t plane = tilesOf(largest, block_frames) * kTileFloats * kBlocksAtOnce;
    const std::size_t input_lanes = largest.channels * kBlocksAtOnce;
    const std::size_t output_lanes = largest.responses() * kBlocksAtOnce;
    forwardWork = points * std::min(input_lanes, transform.width);
    const std::size_t inverse_work = points * std::min(output_lanes, transform.width);
    lanes.resizeOrThrow(2 * plane * largest.rows);
    work.resizeOrThrow(std::max(forwardWork + 2 * plane * sizeof(float) / sizeof(double), inverse_work));
}

ConvolutionBank::ConvolutionBank(const BankShape& shape, const Taps* responses, std::size_t partitions,
                                 ConvolutionWorkspace& workspace)
    : shape_(shape),
      block_frames_(workspace.tables.points()),
      partitions_(partitions),
      tiles_(tilesOf(shape, block_frames_)),
      silent_blocks_(partitions) {
    inputs_.resizeOrThrow(tiles_ * (partitions - 1) * kTileSpectrumFloats);
    responses_.resizeOrThrow(tiles_ * partitions * shape.rows * kTileSpectrumFloats);
    accumulated_.resizeOrThrow(tiles_ * shape.rows * kTileSpectrumFloats);
    overlap_.resizeOrThrow(block_frames_ * shape.responses());
    block_.resizeOrThrow(block_frames_ * shape.channels);
    transformResponses(responses, workspace);
}

BankMemory ConvolutionBank::memory() {
    return {.inputs = inputs_.data(),
            .responses = responses_.data(),
            .accumulated = accumulated_.data(),
            .tiles = tiles_,
            .partitions = partitions_,
            .channels = shape_.channels,
            .rows = shape_.rows};
}

/* Two partitions of every response at a time, as lanes [partition][response]. */
void ConvolutionBank::transformResponses(const Taps* responses, ConvolutionWorkspace& workspace) {
    const std::size_t lanes = kBlocksAtOnce * shape_.responses();
    float* const frames = workspace.lanes.data();
    const LanePlanes spectra = planesAt(frames, block_frames_ * lanes);
    for (std::size_t first = 0; first < partitions_; first += kBlocksAtOnce) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const Taps& response = responses[lane % shape_.responses()];
            const std::size_t partition = first + lane / shape_.responses();
            const std::size_t start = std::min(partition * block_frames_, response.count);
            const std::size_t count = std::min(response.count - start, block_frames_);
            for (std::size_t i = 0; i < count; ++i) frames[i * lanes + lane] = response.data[start + i];
            for (std::size_t i = count; i < block_frames_; ++i) frames[i * lanes + lane] = 0.0F;
        }
        workspace.transform.forward(workspace.tables, frames, lanes, spectra.re, spectra.im,
                                    workspace.work.data());
        const std::size_t count = std::min(kBlocksAtOnce, partitions_ - first);
        for (std::size_t lane = 0; lane < count * shape_.responses(); ++lane) {
            const std::size_t partition = first + lane / shape_.responses();
            const std::size_t row = lane % shape_.responses() / shape_.channels;
            const std::size_t channel = lane % shape_.channels;
            for (std::size_t bin = 0; bin < block_frames_; ++bin) {
                const std::size_t k = bin * shape_.channels + channel;
                float* const tile =
                    responses_.data() +
                    ((k / kTileFloats * partitions_ + partition) * shape_.rows + row) * kTileSpectrumFloats;
                tile[k % kTileFloats] = spectra.re[bin * lanes + lane];
                tile[kTileFloats + k % kTileFloats] = spectra.im[bin * lanes + lane];
            }
        }
    }
}

void ConvolutionBank::process(const Input& in, float* ears, std::size_t frames, Mixing mixing,
                              ConvolutionWorkspace& workspace) {
    Input rest = in;
    std::size_t done = 0;
    while (done < frames) {
        const Step step = takeInput(rest, frames - done, nextBlock(workspace));
        /* After P silent blocks the ring holds zeros only, so that the sums, which start from +0 and never
         * become -0, and the overlap are +0 everywhere, and rendering would leave them so. The block may keep
         * zeros of either sign, which come to the same. */
        float* const step_ears = ears + done * shape_.earCount();
        if (silent_blocks_ == partitions_ && is_block_silent_ && step.is_silent && step.is_next_silent) {
            if (mixing == Mixing::kSet) std::fill_n(step_ears, step.allFrames() * shape_.earCount(), 0.0F);
        } else {
            render(step, step_ears, mixing, workspace);
        }
        advance(step);
        done += step.allFrames();
        for (std::size_t channel = 0; channel < shape_.channels; ++channel) {
            rest.first[channel] = in.first[channel] + done * in.stride;
        }
    }
}

/* Room for [frame][channel], behind that of two blocks side by side. */
float* ConvolutionBank::nextBlock(ConvolutionWorkspace& workspace) const {
    return workspace.lanes.data() + kBlocksAtOnce * block_frames_ * shape_.channels;
}

ConvolutionBank::Step ConvolutionBank::takeInput(const Input& in, std::size_t frames, float* next) {
    const std::size_t channels = shape_.channels;
    Step step;
    step.frames = std::min(block_frames_ - fill_, frames);
    /* A block that begins sums the older ones up, of which only one can at a time; and one that is complete
     * leaves its second half to the next. */
    const std::size_t rest = frames - step.frames;
    if (fill_ > 0 && rest < block_frames_) step.frames_of_next = rest;

    float* const block = block_.data() + fill_ * channels;
    gather(in, channels, 0, step.frames, block);
    gather(in, channels, step.frames, step.frames_of_next, next);
    step.is_silent = areZeros(block, step.frames * channels);
    step.is_next_silent = areZeros(next, step.frames_of_next * channels);
    return step;
}

void ConvolutionBank::render(const Step& step, float* ears, Mixing mixing, ConvolutionWorkspace& workspace) {
    const bool is_finished = fill_ + step.frames == block_frames_;
    const std::size_t blocks = step.frames_of_next > 0 ? 2 : 1;
    const std::size_t plane = tiles_ * kTileFloats * blocks;
    float* const lanes = workspace.lanes.data();
    double* const work = workspace.work.data();
    const LanePlanes input = planesAt(reinterpret_cast<float*>(work + workspace.forwardWork), plane);
    const LanePlanes sums = planesAt(lanes, plane * shape_.rows);

    const float* const frames = framesToTransform(step, workspace);
    workspace.transform.forward(workspace.tables, frames, blocks * shape_.channels, input.re, input.im, work);
    if (is_finished) {
        const std::size_t kept = step.frames_of_next * shape_.channels;
        std::copy_n(nextBlock(workspace), kept, block_.data());
        std::fill(block_.data() + kept, block_.data() + block_.size(), 0.0F);
    }
    if (blocks == 2) {
        workspace.arithmetic.twoBlocks(memory(), shape_.ears, newest_, input, sums);
    } else {
        workspace.arithmetic.oneBlock(memory(), shape_.ears, newest_, fill_ == 0, is_finished, input, sums);
    }
    if (is_finished && partitions_ > 1) newest_ = slotBefore(newest_, partitions_ - 1);
    workspace.transform.inverse(workspace.tables, sums.re, sums.im, blocks * shape_.responses(), lanes, work);
    output(step, lanes, ears, mixing);
}

/* One block as it is kept, two of them side by side. */
const float* ConvolutionBank::framesToTransform(const Step& step, ConvolutionWorkspace& workspace) {
    if (step.frames_of_next == 0) return block_.data();
    float* const lanes = workspace.lanes.data();
    const auto interleave = shape_.channels == 1 ? interleaveBlocks<1> : interleaveBlocks<2>;
    interleave(block_.data(), nextBlock(workspace), step.frames_of_next, block_frames_, lanes);
    return lanes;
}

/* @param frames [2 L][term][block][ear] */
void ConvolutionBank::output(const Step& step, const float* frames, float* ears, Mixing mixing) {
    const std::size_t ear_count = shape_.earCount();
    const std::size_t terms = shape_.responses() / ear_count;
    const std::size_t blocks = step.frames_of_next > 0 ? 2 : 1;
    const std::size_t row = terms * blocks * ear_count;
    const std::size_t overlap_row = terms * ear_count;
    const bool adds = mixing == Mixing::kAdd;
    mix(shape_, {frames + fill_ * row, row, blocks * ear_count},
        {overlap_.data() + fill_ * overlap_row, overlap_row, ear_count}, step.frames, adds, ears);
    if (fill_ + step.frames < block_frames_) return;

    const Outputs second_half = {frames + block_frames_ * row, row, blocks * ear_count};
    mix(shape_, {frames + ear_count, row, blocks * ear_count}, second_half, step.frames_of_next, adds,
        ears + step.frames * ear_count);
    pack(shape_, second_half, block_frames_, overlap_.data());
}

void ConvolutionBank::advance(const Step& step) {
    fill_ += step.frames;
    is_block_silent_ = is_block_silent_ && step.is_silent;
    if (fill_ < block_frames_) return;
    silent_blocks_ = is_block_silent_ ? std::min(silent_blocks_ + 1, partitions_) : 0;
    fill_ = step.frames_of_next;
    is_block_silent_ = step.is_next_silent;
}

}  // namespace fftconvolver
