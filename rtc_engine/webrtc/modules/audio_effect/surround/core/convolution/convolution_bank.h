// A few channels of a stream convolved with fixed responses together: uniform partitions in the frequency
// domain, as in fftconvolver.h, with channels, responses and snapshots of blocks as lanes of vectors.
//
//   y[row][channel] = input[channel] * response[row][channel]
//
// A channel is transformed once for all its rows. The bits are those of a convolver of its own for every
// response.
//
// A bank costs nothing while its input has been silent for longer than its responses: all its spectra are
// zero then, and so is what it would add.
//
// Input and responses are finite numbers: what is not lasts as long as the longest response of the bank.
//
// Threads: a bank and its workspace are used by one thread at a time.
#pragma once

#include <cstddef>

#include "arena.h"
#include "bank_arithmetic.h"
#include "lane_transform.h"
#include "steps.h"

namespace sonivex {

/** A response in the time domain. */
struct Taps {
    const float* data = nullptr;
    std::size_t count = 0;
};

struct BankShape {
    std::size_t channels = 1;      // 1 or 2
    std::size_t rows = 1;          // 1 or 2
    Ears ears = Ears::kBoth;       // kBoth if, and only if, there is one output
    bool shares_response = false;  // two channels of one row have the same response

    std::size_t outputs() const { return rows * channels; }
    std::size_t responses() const { return shares_response ? 1 : outputs(); }
    /** Outputs that are different at the two ears. */
    std::size_t earLanes() const { return ears == Ears::kBoth ? 1 : 2; }
    /** Outputs that meet at an ear. */
    std::size_t terms() const { return outputs() / earLanes(); }
};

/** Memory that banks of one block length need during a call and not between calls: they share it. */
class ConvolutionWorkspace {
  public:
    /** The largest bank there is. */
    static constexpr BankShape kLargestShape = {.channels = 2, .rows = 2, .ears = Ears::kRows};

    /** @param block_frames L, a power of two.
     *  Throws std::bad_alloc when memory runs out. */
    ConvolutionWorkspace(std::size_t block_frames, Arena& arena);

    /** The bytes that it takes of an arena. */
    static std::size_t bytesOf(std::size_t block_frames);

    std::size_t blockFrames() const { return tables_.points(); }

  private:
    friend class ConvolutionBank;

    TransformTables tables_;
    const LaneTransform& transform_;
    const BankArithmetic& arithmetic_;
    float* input_;  // spectra of a step's snapshots
    float* lanes_;  // frames, then sums of products, then frames again
    double* work_;  // of the transforms
};

class ConvolutionBank {
  public:
    static constexpr std::size_t kMostChannels = 2;
    static constexpr std::size_t kMostResponses = 4;

    /** @param responses  [rows][channels], or the shared one; transformed and not kept.
     *  @param partitions P, at least 1: what the longest response needs.
     *  @param workspace  for the block length.
     *  Throws std::bad_alloc when the arena has no room. */
    ConvolutionBank(const BankShape& shape, const Taps* responses, std::size_t partitions,
                    ConvolutionWorkspace& workspace, Arena& arena);

    /** The bytes that a bank takes of an arena. */
    static std::size_t bytesOf(const BankShape& shape, std::size_t partitions, std::size_t block_frames);

    /** Interleaved or plane by plane: sample i of a channel is first[i * stride]. */
    struct Input {
        const float* first[kMostChannels];
        std::size_t stride;
    };

    /** Convolve the next frames; addOutputs then has what comes out.
     *  @param step  the first one begins at frame 0 of a block; each goes on where the one before ended.
     *  @param in    step.frames() frames.
     *  Real-time safe. */
    void render(const Step& step, const Input& in, ConvolutionWorkspace& workspace);

    /** Add the outputs of the last step, which had so many frames.
     *  @param ears [frames][2]: every ear gets its outputs one after the other, by channels if the ears are
     *              rows and by rows if they are channels.
     *  Real-time safe. */
    void addOutputs(std::size_t frames, float* ears) const;

    std::size_t partitions() const { return memory_.partitions; }

  private:
    void transformResponses(const Taps* responses, float* spectra, ConvolutionWorkspace& workspace) const;
    bool takeSilence(const Step& step);
    void convolve(const Step& step, ConvolutionWorkspace& workspace);

    BankShape shape_;
    std::size_t block_frames_;
    BankMemory memory_{};     // as bank_arithmetic.h has it
    std::size_t newest_ = 0;  // slot in memory_.inputs
    float* overlap_;  // [frame][term][ear]: second half of the last finished block's inverse transform
    float* stream_;   // [frame][channel]: the blocks of a step, or what there is of the one being filled
    float* outputs_;  // [frame][term][ear] of the last step
    bool has_outputs_ = false;  // else they are all zeros, and not written
    bool is_block_silent_ = true;
    std::size_t silent_blocks_;  // finished since the last sound, up to P
};

}  // namespace sonivex
