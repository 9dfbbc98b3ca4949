/* The convolutions of one stage of the surround effect, gathered in banks: two sources each, or one that is
 * left over.
 *
 *   ear[frame] = sum over the sources of (source * response(source, ear))[frame], in the sources' order
 *
 * Use: build once, render for every block. */
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "convolution_bank.h"

namespace sonivex {

/** Which input channel goes through which agents: a pair of ears, or one of them. */
struct Source {
    std::size_t plane;
    int left_agent;  // or kNoAgent
    int right_agent;
};

inline constexpr int kNoAgent = -1;

class SourceBanks {
  public:
    using Taps = fftconvolver::Taps;
    using Workspace = fftconvolver::ConvolutionWorkspace;

    /** Largest bank there is, for the workspace. */
    static constexpr fftconvolver::BankShape kLargestShape = {.channels = 2, .rows = 2};

    /** @param sources      all with two agents, or left and right in turn; must live on.
     *  @param responses    by agent number; transformed and not kept.
     *  @param workspace    for kLargestShape; its block length is that of the partitions.
     *  Throws std::bad_alloc, and holds the former banks, when memory runs out. */
    void build(std::span<const Source> sources, std::span<const Taps> responses,
               std::shared_ptr<Workspace> workspace);

    void clear();

    bool isEmpty() const { return banks_.empty(); }
    bool areFor(std::span<const Source> sources) const { return sources.data() == sources_.data(); }

    /** @param in   [frames][width] interleaved; apart from `ears`.
     *  @param ears [frames][2], overwritten.
     *  Real-time safe. */
    void render(const float* in, std::size_t width, std::size_t frames, float* ears);

  private:
    struct PlanesOfBank {
        std::size_t planes[fftconvolver::ConvolutionBank::kMaxChannels];
        std::unique_ptr<fftconvolver::ConvolutionBank> bank;
    };

    std::span<const Source> sources_;
    std::shared_ptr<Workspace> workspace_;
    std::vector<PlanesOfBank> banks_;
};

}  // namespace sonivex
