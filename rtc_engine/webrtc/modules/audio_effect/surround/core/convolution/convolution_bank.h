// Convolution of one or two channels of a stream with fixed responses: uniform partitions in the frequency
// domain, as in fftconvolver.h. Channels, responses and snapshots of blocks are lanes of vectors.
//
//   y[row][channel] = input[channel] * response[row][channel]
//
// The bank transforms a channel once for all its rows. Its output has the same bits as one scalar convolver
// for every response.
//
// A bank costs almost nothing once its input has been silent for longer than its responses: all its spectra
// are then zero, and so is everything it would add.
//
// Input and responses must be finite. A NaN or infinity contaminates the output for the length of the bank's
// longest response.
//
// Use: ConvolutionBank bank(..); for every step: bank.render(step, in, workspace), then bank.addOutputs(..).
// Threads: one thread at a time uses a bank and its workspace.
#pragma once

#include <cstddef>

#include "arena.h"
#include "bank_arithmetic.h"
#include "lane_transform.h"
#include "steps.h"

namespace sonivex {

/** A response in the time domain; the caller owns the samples. */
struct Taps {
    const float* data = nullptr;
    std::size_t count = 0;
};

/** The dimensions of a bank. */
struct BankShape {
    std::size_t channels = 1;      // 1 or 2
    std::size_t rows = 1;          // 1 or 2
    Ears ears = Ears::kBoth;       // kBoth if and only if there is one output
    bool shares_response = false;  // the two channels of the only row have the same response

    /** Signals that the bank computes: one for every row and channel. [any] real-time safe */
    std::size_t outputs() const { return rows * channels; }
    /** Distinct responses. [any] real-time safe */
    std::size_t responses() const { return shares_response ? 1 : outputs(); }
    /** 2 if the ears get different outputs, 1 if they share one. [any] real-time safe */
    std::size_t earLanes() const { return ears == Ears::kBoth ? 1 : 2; }
    /** Outputs that are summed at each ear. [any] real-time safe */
    std::size_t terms() const { return outputs() / earLanes(); }
};

/** Working memory that all banks of one block length share: they need it only during a call. */
class ConvolutionWorkspace {
  public:
    /** The largest bank that a workspace serves. */
    static constexpr BankShape kLargestShape = {.channels = 2, .rows = 2, .ears = Ears::kRows};

    /** @param block_frames L, a power of two.
     *  @param arena        has room for bytesOf(block_frames) and outlives the workspace.
     *  Throws std::bad_alloc when memory runs out. [any] not real-time safe: allocates */
    ConvolutionWorkspace(std::size_t block_frames, Arena& arena);

    /** Bytes that a workspace takes of an arena. [any, concurrent] real-time safe */
    static std::size_t bytesOf(std::size_t block_frames);

    /** L, frames of a block. [any] real-time safe */
    std::size_t blockFrames() const { return tables_.points(); }

  private:
    friend class ConvolutionBank;

    TransformTables tables_;
    const LaneTransform& transform_;
    const BankArithmetic& arithmetic_;
    float* input_;  // spectra of a step's snapshots
    float* lanes_;  // frames, then sums of products, then frames again
    double* work_;  // working memory of the transforms
};

/** A group of convolvers that run as lanes of vectors. */
class ConvolutionBank {
  public:
    /** Maximum number of channels of a bank. */
    static constexpr std::size_t kMaxChannels = 2;
    /** Maximum number of responses of a bank. */
    static constexpr std::size_t kMaxResponses = 4;

    /** @param responses  [rows][channels], or the shared one. They are transformed and not kept.
     *  @param partitions P, at least 1: the partitions of the longest response.
     *  @param workspace  its block length is the partition length.
     *  @param arena      has room for bytesOf(..) and outlives the bank.
     *  Throws std::bad_alloc when the arena has too little room. [any] not real-time safe: transforms the
     *  responses */
    ConvolutionBank(const BankShape& shape, const Taps* responses, std::size_t partitions,
                    ConvolutionWorkspace& workspace, Arena& arena);

    /** Bytes that a bank takes of an arena. [any, concurrent] real-time safe */
    static std::size_t bytesOf(const BankShape& shape, std::size_t partitions, std::size_t block_frames);

    /** Interleaved or planar input: sample i of channel c is first[c][i * stride]. */
    struct Input {
        const float* first[kMaxChannels];
        std::size_t stride;
    };

    /** Convolves the next frames and keeps the result for addOutputs.
     *  @param step      the first step begins at frame 0 of a block; each later one continues where the step
     *                   before ended.
     *  @param in        step.frames() frames of every channel.
     *  @param workspace of the bank's block length.
     *  [any] real-time safe */
    void render(const Step& step, const Input& in, ConvolutionWorkspace& workspace);

    /** Adds the outputs of the last step.
     *  @param frames frames of the last step.
     *  @param ears   [frames][2], interleaved. Each ear adds its outputs one by one: in channel order if the
     *                ears are rows, in row order if they are channels.
     *  [any] real-time safe */
    void addOutputs(std::size_t frames, float* ears) const;

    /** Forgets all input: the next step begins at frame 0 of a block, and its output has the same bits as
     *  that of a new bank.
     *  [any] real-time safe */
    void reset();

    /** P. [any] real-time safe */
    std::size_t partitions() const { return memory_.partitions; }

  private:
    std::size_t inputFloats() const { return memory_.tiles * (memory_.partitions - 1) * kTileSpectrumFloats; }
    std::size_t sumFloats() const { return memory_.tiles * memory_.rows * kTileSpectrumFloats; }
    std::size_t overlapFloats() const { return block_frames_ * shape_.outputs(); }
    void transformResponses(const Taps* responses, float* spectra, ConvolutionWorkspace& workspace) const;
    bool takeSilence(const Step& step);
    void convolve(const Step& step, ConvolutionWorkspace& workspace);

    BankShape shape_;
    std::size_t block_frames_;
    BankMemory memory_{};     // laid out as in bank_arithmetic.h
    std::size_t newest_ = 0;  // slot in memory_.inputs
    float* overlap_;  // [frame][term][ear]: second half of the last finished block's inverse transform
    float* stream_;   // [frame][channel]: the blocks of a step; between steps, the block being filled
    float* outputs_;  // [frame][term][ear] of the last step
    bool has_outputs_ = false;  // false: the outputs are all zeros and outputs_ is not written
    bool is_block_silent_ = true;
    std::size_t silent_blocks_;  // blocks finished since the last sound, up to P
};

}  // namespace sonivex
