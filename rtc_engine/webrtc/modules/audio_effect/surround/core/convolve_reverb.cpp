#include "convolve_reverb.h"

#include <algorithm>
#include <array>

#include "float_rules.h"
#include "layouts.h"
#include "response_length.h"

namespace {

using sonivex::Layout;
using sonivex::Taps;

constexpr std::size_t kAgents = 24;

// Shortest tail partition in samples, before it is rounded up to a power of two. With the surround effect's
// blocks it is longer than every response. The whole response then lies in the head stage, and banks need no
// other stage.
constexpr std::uint64_t kShortestTail = 12768;

void appendScaled(const ConvolveReverb::Table& table, std::size_t samples, double divisor,
                  ConvolveReverb::Response& response) {
    const std::size_t loaded = response.size();
    response.resize(loaded + samples);
    for (std::size_t i = 0; i < samples; ++i) {
        response[loaded + i] = static_cast<float>(static_cast<double>(table[i]) / divisor);
    }
}

std::array<Taps, kAgents> tapsOfAgents(const Layout& layout,
                                       const std::vector<ConvolveReverb::Response>& responses) {
    std::array<Taps, kAgents> taps{};
    auto response = responses.begin();
    for (const sonivex::Source& source : layout.sources) {
        for (const int agent : {source.left_agent, source.right_agent}) {
            if (agent == sonivex::kNoAgent) continue;
            taps[static_cast<std::size_t>(agent)] = {response->data(), response->size()};
            ++response;
        }
    }
    return taps;
}

}  // namespace

ConvolveReverb::Stage& ConvolveReverb::stageOf(const Layout& layout) {
    return &layout == &sonivex::kAudio ? audio_stage_ : layout_stage_;
}

// Returns the bytes to reserve for what follows the set-up of a layout. The Audio stage has its own set-up
// later, but its memory should lie next to that of the layout's stage.
std::size_t ConvolveReverb::bytesForLater(const Layout& layout) const {
    if (!layout.has_audio_stage) return owner_bytes_;
    const sonivex::BankShape audio_shape = {.channels = 2,
                                            .rows = 1,
                                            .ears = sonivex::Ears::kChannels,
                                            .shares_response = g_dolbyL441 == g_dolbyR441};
    const auto partition_frames = static_cast<std::size_t>(headBlockSize);
    const std::size_t partitions =
        fftconvolver::partitionsOf(sonivex::kAudio.format.samples, partition_frames);
    return owner_bytes_ + sonivex::ConvolutionBank::bytesOf(audio_shape, partitions, partition_frames);
}

void ConvolveReverb::prepare(const Layout& layout, int new_channels, int block_frames, unsigned mode) {
    channels = new_channels;
    block_frames_ = static_cast<std::size_t>(std::max(block_frames, 0));
    headBlockSize = fftconvolver::powerOfTwoNotBelow(block_frames_);
    tailBlockSize = std::max(kShortestTail, 2 * headBlockSize);

    Stage& stage = stageOf(layout);
    const auto tables = sonivex::tablesOf(layout, mode);
    if (stage.tables.data() != tables.data()) stage.responses.assign(tables.size(), {});
    stage.layout = &layout;
    stage.tables = tables;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        appendScaled(*tables[i], layout.format.samples, layout.format.divisor, stage.responses[i]);
    }

    const std::array<Taps, kAgents> taps = tapsOfAgents(layout, stage.responses);
    const auto partition_frames = static_cast<std::size_t>(headBlockSize);
    const std::size_t bytes = sonivex::SourceBanks::bytesOf(layout.sources, taps, partition_frames);
    if (memory_ == nullptr || memory_->workspace.blockFrames() != partition_frames ||
        memory_->arena.room() < bytes + owner_bytes_) {
        memory_ =
            std::make_shared<sonivex::ConvolutionMemory>(partition_frames, bytes + bytesForLater(layout));
    }
    stage.banks.build(layout.sources, taps, memory_);
}

void ConvolveReverb::reset() {
    layout_stage_.banks.reset();
    audio_stage_.banks.reset();
}

bool ConvolveReverb::isReady(const Stage& stage, const Layout& layout, std::size_t frames) const {
    const bool takes_channels = &layout == &sonivex::kAudio ? channels > 0 : takesChannels(layout, channels);
    return stage.layout == &layout && takes_channels && frames <= block_frames_;
}

int ConvolveReverb::process(const Layout& layout, const float* in, float* out, int n, int blocks) {
    if (n < 1) return n;
    const auto frames = static_cast<std::size_t>(n);
    const auto calls = static_cast<std::size_t>(blocks);
    Stage& stage = stageOf(layout);
    if (!isReady(stage, layout, frames)) {
        std::fill_n(out, 2 * frames * calls, 0.0F);
        return n;
    }
    stage.banks.render(in, static_cast<std::size_t>(layout.width), frames, calls, out);
    return n;
}
