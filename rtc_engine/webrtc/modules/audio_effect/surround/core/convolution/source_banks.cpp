#include "source_banks.h"

#include <algorithm>
#include <array>

#include "response_length.h"

namespace sonivex {
namespace {

using fftconvolver::lengthWithoutSilentEnd;
using fftconvolver::partitionsOf;

constexpr std::size_t kMaxSources = 4;  // per bank

// One bank's share of the sources.
struct Plan {
    BankShape shape;
    std::size_t sources = 0;                                   // count
    std::array<int, ConvolutionBank::kMaxResponses> agents{};  // [row][channel]
    std::size_t partitions = 1;
};

bool areEqual(const Taps& a, const Taps& b) {
    return std::equal(a.data, a.data + a.count, b.data, b.data + b.count);
}

// Returns true if both ears hear the source through equal responses.
bool isHeardAlike(const Source& source, std::span<const Taps> responses) {
    return areEqual(responses[static_cast<std::size_t>(source.left_agent)],
                    responses[static_cast<std::size_t>(source.right_agent)]);
}

// Plans one source that both ears hear alike, or up to two that they hear differently, with the ears as rows.
Plan planOfBothEars(std::span<const Source> sources, std::span<const Taps> responses) {
    if (isHeardAlike(sources[0], responses)) {
        return {.shape = {.channels = 1, .rows = 1, .ears = Ears::kBoth},
                .sources = 1,
                .agents = {sources[0].left_agent}};
    }
    const bool are_two = sources.size() > 1 && !isHeardAlike(sources[1], responses);
    const std::size_t count = are_two ? 2 : 1;
    Plan plan = {.shape = {.channels = count, .rows = 2, .ears = Ears::kRows}, .sources = count};
    for (std::size_t channel = 0; channel < count; ++channel) {
        plan.agents[channel] = sources[channel].left_agent;
        plan.agents[count + channel] = sources[channel].right_agent;
    }
    return plan;
}

// Plans a left and a right source, with the ears as channels. A second pair of the same channels adds a row.
Plan planOfSides(std::span<const Source> sources, std::span<const Taps> responses) {
    const bool are_two_pairs = sources.size() >= kMaxSources && sources[2].plane == sources[0].plane &&
                               sources[3].plane == sources[1].plane;
    const std::size_t count = are_two_pairs ? kMaxSources : 2;
    Plan plan = {.shape = {.channels = 2, .rows = count / 2, .ears = Ears::kChannels}, .sources = count};
    for (std::size_t i = 0; i < count; ++i) plan.agents[i] = onlyAgent(sources[i]);
    const auto taps_of = [&](int agent) { return responses[static_cast<std::size_t>(agent)]; };
    plan.shape.shares_response = count == 2 && areEqual(taps_of(plan.agents[0]), taps_of(plan.agents[1]));
    return plan;
}

Taps audiblePartOf(Taps response) {
    return {response.data, lengthWithoutSilentEnd(response.data, response.count)};
}

// Plans the banks in the order of the sources, which is the order of the sums.
std::vector<Plan> planBanks(std::span<const Source> sources, std::span<const Taps> responses,
                            std::size_t block_frames) {
    std::vector<Plan> plans;
    while (!sources.empty()) {
        Plan plan =
            hasBothEars(sources[0]) ? planOfBothEars(sources, responses) : planOfSides(sources, responses);
        for (std::size_t i = 0; i < plan.shape.responses(); ++i) {
            const Taps taps = audiblePartOf(responses[static_cast<std::size_t>(plan.agents[i])]);
            plan.partitions = std::max(plan.partitions, partitionsOf(taps.count, block_frames));
        }
        sources = sources.subspan(plan.sources);
        plans.push_back(plan);
    }
    return plans;
}

}  // namespace

std::size_t SourceBanks::bytesOf(std::span<const Source> sources, std::span<const Taps> responses,
                                 std::size_t block_frames) {
    std::size_t bytes = 0;
    for (const Plan& plan : planBanks(sources, responses, block_frames)) {
        bytes += ConvolutionBank::bytesOf(plan.shape, plan.partitions, block_frames);
    }
    return bytes;
}

void SourceBanks::build(std::span<const Source> sources, std::span<const Taps> responses,
                        std::shared_ptr<ConvolutionMemory> memory) {
    const std::vector<Plan> plans = planBanks(sources, responses, memory->workspace.blockFrames());
    std::vector<PlanesOfBank> banks;
    banks.reserve(plans.size());
    for (const Plan& plan : plans) {
        std::array<Taps, ConvolutionBank::kMaxResponses> taps{};
        for (std::size_t i = 0; i < plan.shape.responses(); ++i) {
            taps[i] = audiblePartOf(responses[static_cast<std::size_t>(plan.agents[i])]);
        }
        PlanesOfBank added = {.planes = {},
                              .bank = ConvolutionBank(plan.shape, taps.data(), plan.partitions,
                                                      memory->workspace, memory->arena)};
        for (std::size_t channel = 0; channel < plan.shape.channels; ++channel) {
            added.planes[channel] = sources[channel].plane;
        }
        banks.push_back(added);
        sources = sources.subspan(plan.sources);
    }
    banks_ = std::move(banks);
    memory_ = std::move(memory);
    fill_ = 0;
    goes_back_ = false;
}

void SourceBanks::reset() {
    for (PlanesOfBank& share : banks_) share.bank.reset();
    fill_ = 0;
    goes_back_ = false;
}

void SourceBanks::render(const float* in, std::size_t width, std::size_t frames, std::size_t calls,
                         float* ears) {
    Steps steps(memory_->workspace.blockFrames(), fill_, frames, calls);
    while (steps.areLeft()) {
        const Step step = steps.next();
        // Steps visit the banks forwards and backwards in turn: the banks that a step touches last are still
        // in the cache for the next step.
        for (std::size_t i = 0; i < banks_.size(); ++i) {
            PlanesOfBank& share = banks_[goes_back_ ? banks_.size() - 1 - i : i];
            const ConvolutionBank::Input input = {.first = {in + share.planes[0], in + share.planes[1]},
                                                  .stride = width};
            share.bank.render(step, input, memory_->workspace);
        }
        goes_back_ = !goes_back_;
        std::fill_n(ears, 2 * step.frames(), 0.0F);
        for (const PlanesOfBank& share : banks_) share.bank.addOutputs(step.frames(), ears);
        fill_ = step.lastFill();
        in += step.frames() * width;
        ears += 2 * step.frames();
    }
}

}  // namespace sonivex
