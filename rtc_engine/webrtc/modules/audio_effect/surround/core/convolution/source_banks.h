// The convolutions of one stage of the surround effect, grouped into banks of one or two input channels.
//
//   ear[frame] = sum over the sources of (source * response(source, ear))[frame], in the sources' order
//
// A source that both ears hear through equal responses is convolved once for both.
//
// Use: SourceBanks banks; banks.build(sources, responses, memory); banks.render(..) for every call.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "convolution_bank.h"
#include "source.h"

namespace sonivex {

/** The memory of banks, and the workspace that they share during a call. */
struct ConvolutionMemory {
    /** @param block_frames L, a power of two.
     *  @param bytes        room in the arena beside the workspace.
     *  Throws std::bad_alloc when memory runs out. [any] not real-time safe: allocates */
    ConvolutionMemory(std::size_t block_frames, std::size_t bytes)
        : arena(ConvolutionWorkspace::bytesOf(block_frames) + bytes), workspace(block_frames, arena) {}

    Arena arena;
    ConvolutionWorkspace workspace;
};

/** The banks of one stage. One thread at a time uses an object. */
class SourceBanks {
  public:
    /** @param sources      all heard by both ears, or each by one ear with left and right alternating.
     *  @param responses    indexed by agent number.
     *  @param block_frames L.
     *  @return bytes that the banks of these sources take of an arena.
     *  Throws std::bad_alloc when memory runs out. [any, concurrent] not real-time safe: allocates */
    static std::size_t bytesOf(std::span<const Source> sources, std::span<const Taps> responses,
                               std::size_t block_frames);

    /** Builds the banks and starts from silence.
     *  @param sources   as for bytesOf.
     *  @param responses indexed by agent number. They are transformed and not kept.
     *  @param memory    has room for bytesOf(..); its block length is the partition length. The banks share
     *                   its ownership.
     *  Throws std::bad_alloc and keeps the former banks when memory runs out.
     *  [any] not real-time safe: allocates */
    void build(std::span<const Source> sources, std::span<const Taps> responses,
               std::shared_ptr<ConvolutionMemory> memory);

    /** Renders several calls of one length; needs a successful build.
     *  @param in     [calls * frames][width] interleaved. It may be `ears` if width is at least 2.
     *  @param frames frames of each call. The cuts between calls decide the bits of the output.
     *  @param ears   [calls * frames][2] interleaved, overwritten.
     *  [any] real-time safe */
    void render(const float* in, std::size_t width, std::size_t frames, std::size_t calls, float* ears);

    /** Starts again from silence, with the bits of newly built banks. Does nothing before the first build.
     *  [any] real-time safe */
    void reset();

  private:
    struct PlanesOfBank {
        std::size_t planes[ConvolutionBank::kMaxChannels] = {};
        ConvolutionBank bank;
    };

    std::shared_ptr<ConvolutionMemory> memory_;
    std::vector<PlanesOfBank> banks_;
    std::size_t fill_ = 0;    // frames of the block being filled
    bool goes_back_ = false;  // true: the next step visits the banks from last to first
};

}  // namespace sonivex
