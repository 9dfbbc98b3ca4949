/* A few channels of a stream convolved with fixed responses together: uniform partitions in the frequency
 * domain, as in fftconvolver.h, with channels, responses and blocks as lanes of vectors.
 *
 *   y[row][channel] = input[channel] * response[row][channel]
 *
 * A channel is transformed once for all its rows. A call that ends one block and begins the next does both at
 * once. The bits are those of a convolver of its own for every response.
 *
 * A bank costs nothing while its input has been silent for longer than its responses: all its spectra are
 * zero then, and so is what it would add.
 *
 * Input and responses are finite numbers: what is not lasts as long as the longest response of the bank.
 *
 * Threads: a bank and its workspace are used by one thread at a time. */
#pragma once

#include <cstddef>

#include "bank_arithmetic.h"
#include "buffer.h"
#include "lane_transform.h"

namespace fftconvolver {

/** A response in the time domain. */
struct Taps {
    const float* data = nullptr;
    std::size_t count = 0;
};

struct BankShape {
    std::size_t channels = 1;  // 1 or 2
    std::size_t rows = 1;      // 1 or 2
    /** Which outputs meet at an ear: those of a row, or those of a channel. A bank of one response has one
     *  ear, every other bank has two. */
    Ears ears = Ears::kRows;

    std::size_t responses() const { return rows * channels; }
    std::size_t earCount() const { return responses() == 1 ? 1 : 2; }
};

/** What banks of one block length need during a call and not between calls: they may share one. */
class ConvolutionWorkspace {
  public:
    /** @param block_frames L, a power of two.
     *  @param largest      of the banks' shapes.
     *  Throws std::bad_alloc when memory runs out. */
    ConvolutionWorkspace(std::size_t block_frames, const BankShape& largest);

    std::size_t blockFrames() const { return tables.points(); }

  private:
    friend class ConvolutionBank;

    audiofft::details::TransformTables tables;
    const audiofft::LaneTransform& transform;
    const BankArithmetic& arithmetic;
    Buffer<float> lanes;      // frames, spectra of the output, frames again
    Buffer<double> work;      // of the transforms
    std::size_t forwardWork;  // doubles of it that a forward transform uses; the input's spectra follow
};

class ConvolutionBank {
  public:
    static constexpr std::size_t kMaxChannels = 2;
    static constexpr std::size_t kMaxResponses = 4;

    /** @param responses  [rows][channels], transformed and not kept.
     *  @param partitions P, at least 1: what the longest response needs.
     *  @param workspace  for the block length.
     *  Throws std::bad_alloc when memory runs out. */
    ConvolutionBank(const BankShape& shape, const Taps* responses, std::size_t partitions,
                    ConvolutionWorkspace& workspace);

    /** Interleaved or plane by plane: sample i of a channel is first[i * stride]. */
    struct Input {
        const float* first[kMaxChannels];
        std::size_t stride;
    };
    enum class Mixing { kSet, kAdd };

    /** Convolve the next frames.
     *  @param in     may be `ears` if its samples lie at the same places.
     *  @param ears   [frames][ears]: every ear gets its outputs one after the other, by channels if the ears
     *                are rows and by rows if they are channels.
     *  @param mixing add to what `ears` holds, or overwrite it.
     *  Real-time safe. */
    void process(const Input& in, float* ears, std::size_t frames, Mixing mixing,
                 ConvolutionWorkspace& workspace);

    std::size_t partitions() const { return partitions_; }

  private:
    /* What a step renders: frames up to the end of the block being filled, and the first ones of the next. */
    struct Step {
        std::size_t frames = 0;
        std::size_t frames_of_next = 0;
        bool is_silent = true;
        bool is_next_silent = true;

        std::size_t allFrames() const { return frames + frames_of_next; }
    };

    BankMemory memory();
    void transformResponses(const Taps* responses, ConvolutionWorkspace& workspace);
    float* nextBlock(ConvolutionWorkspace& workspace) const;
    Step takeInput(const Input& in, std::size_t frames, float* next);
    const float* framesToTransform(const Step& step, ConvolutionWorkspace& workspace);
    void render(const Step& step, float* ears, Mixing mixing, ConvolutionWorkspace& workspace);
    void output(const Step& step, const float* frames, float* ears, Mixing mixing);
    void advance(const Step& step);

    BankShape shape_;
    std::size_t block_frames_;
    std::size_t partitions_;
    std::size_t tiles_;
    /* As bank_arithmetic.h has them. */
    Buffer<float> inputs_;
    Buffer<float> responses_;
    Buffer<float> accumulated_;
    std::size_t newest_ = 0;  // slot in inputs_

    Buffer<float> overlap_;  // [frame][term][ear]: second half of the last finished block's inverse transform
    Buffer<float> block_;    // [frame][channel]: input of the block being filled, zeros behind it
    std::size_t fill_ = 0;
    bool is_block_silent_ = true;
    std::size_t silent_blocks_;  // finished since the last sound, up to P
};

}  // namespace fftconvolver
