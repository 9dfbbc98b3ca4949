// The convolutions of one stage of the surround effect, gathered in banks of one or two sources.
//
//   ear[frame] = sum over the sources of (source * response(source, ear))[frame], in the sources' order
//
// A source that both ears hear through equal responses is convolved once for both.
//
// Use: build, then render for all calls.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "convolution_bank.h"
#include "source.h"

namespace sonivex {

/** The memory that banks lie in and the workspace that they share during a call. */
struct ConvolutionMemory {
    /** @param bytes beside the workspace.
     *  Throws std::bad_alloc when memory runs out. */
    ConvolutionMemory(std::size_t block_frames, std::size_t bytes)
        : arena(ConvolutionWorkspace::bytesOf(block_frames) + bytes), workspace(block_frames, arena) {}

    Arena arena;
    ConvolutionWorkspace workspace;
};

class SourceBanks {
  public:
    /** @param sources   all with two ears, or left and right in turn.
     *  @param responses by agent number.
     *  @return the bytes that their banks take of an arena. */
    static std::size_t bytesOf(std::span<const Source> sources, std::span<const Taps> responses,
                               std::size_t block_frames);

    /** @param responses transformed and not kept.
     *  @param memory    with room for bytesOf(..); its block length is that of the partitions.
     *  Throws std::bad_alloc, and holds the former banks, when memory runs out. */
    void build(std::span<const Source> sources, std::span<const Taps> responses,
               std::shared_ptr<ConvolutionMemory> memory);

    /** Render some calls.
     *  @param in     [calls * frames][width] interleaved; may be `ears`, with a width of at least 2.
     *  @param frames of each call; where the calls are cut is part of the output's bits.
     *  @param ears   [calls * frames][2], overwritten.
     *  Real-time safe. */
    void render(const float* in, std::size_t width, std::size_t frames, std::size_t calls, float* ears);

  private:
    struct PlanesOfBank {
        std::size_t planes[ConvolutionBank::kMostChannels] = {};
        ConvolutionBank bank;
    };

    std::shared_ptr<ConvolutionMemory> memory_;
    std::vector<PlanesOfBank> banks_;
    std::size_t fill_ = 0;    // frames of the block being filled
    bool goes_back_ = false;  // whether the next step goes through the banks from the last one on
};

}  // namespace sonivex
