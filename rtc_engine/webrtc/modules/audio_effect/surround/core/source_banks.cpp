#include "source_banks.h"

#include <algorithm>
#include <array>

#include "float_rules.h"
#include "response_length.h"

namespace sonivex {
namespace {

using fftconvolver::BankShape;
using fftconvolver::ConvolutionBank;
using fftconvolver::Ears;
using fftconvolver::Taps;

bool hasBothEars(const Source& source) {
    return source.left_agent != kNoAgent && source.right_agent != kNoAgent;
}

int onlyAgent(const Source& source) {
    return source.left_agent != kNoAgent ? source.left_agent : source.right_agent;
}

/* One bank's share of the sources. */
struct Plan {
    BankShape shape;
    std::array<int, ConvolutionBank::kMaxResponses> agents{};  // [row][channel]
};

/* Rows are the ears. */
Plan planOfPairs(std::span<const Source> sources) {
    Plan plan = {.shape = {.channels = sources.size(), .rows = 2, .ears = Ears::kRows}};
    for (std::size_t channel = 0; channel < sources.size(); ++channel) {
        plan.agents[channel] = sources[channel].left_agent;
        plan.agents[sources.size() + channel] = sources[channel].right_agent;
    }
    return plan;
}

/* Left and right in turn: the channels are the ears. */
Plan planOfSides(std::span<const Source> sources) {
    Plan plan = {.shape = {.channels = 2, .rows = sources.size() / 2, .ears = Ears::kChannels}};
    std::transform(sources.begin(), sources.end(), plan.agents.begin(), onlyAgent);
    return plan;
}

}  // namespace

void SourceBanks::clear() {
    banks_.clear();
    sources_ = {};
    workspace_.reset();
}

void SourceBanks::build(std::span<const Source> sources, std::span<const Taps> responses,
                        std::shared_ptr<Workspace> workspace) {
    const bool are_pairs = hasBothEars(sources.front());
    const std::size_t sources_of_bank = are_pairs ? 2 : 4;
    std::vector<PlanesOfBank> banks;
    banks.reserve((sources.size() + sources_of_bank - 1) / sources_of_bank);
    for (std::size_t first = 0; first < sources.size(); first += sources_of_bank) {
        const auto share = sources.subspan(first, std::min(sources_of_bank, sources.size() - first));
        const Plan plan = are_pairs ? planOfPairs(share) : planOfSides(share);
        std::array<Taps, ConvolutionBank::kMaxResponses> taps{};
        std::size_t partitions = 1;
        for (std::size_t i = 0; i < plan.shape.responses(); ++i) {
            taps[i] = responses[static_cast<std::size_t>(plan.agents[i])];
            taps[i].count = fftconvolver::lengthWithoutSilentEnd(taps[i].data, taps[i].count);
            partitions =
                std::max(partitions, fftconvolver::partitionsOf(taps[i].count, workspace->blockFrames()));
        }
        PlanesOfBank added{};
        for (std::size_t channel = 0; channel < plan.shape.channels; ++channel) {
            added.planes[channel] = share[channel].plane;
        }
        added.bank = std::make_unique<ConvolutionBank>(plan.shape, taps.data(), partitions, *workspace);
        banks.push_back(std::move(added));
    }
    banks_ = std::move(banks);
    sources_ = sources;
    workspace_ = std::move(workspace);
}

void SourceBanks::render(const float* in, std::size_t width, std::size_t frames, float* ears) {
    std::fill_n(ears, 2 * frames, 0.0F);
    for (const PlanesOfBank& share : banks_) {
        const ConvolutionBank::Input input = {.first = {in + share.planes[0], in + share.planes[1]},
                                              .stride = width};
        share.bank->process(input, ears, frames, ConvolutionBank::Mixing::kAdd, *workspace_);
    }
}

}  // namespace sonivex
