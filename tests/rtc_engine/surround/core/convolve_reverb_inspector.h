#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>

#include "convolve_reverb.h"
#include "layouts.h"

/** Looks into a ConvolveReverb. */
class ConvolveReverbInspector {
  public:
    using Responses = std::span<const ConvolveReverb::Response>;
    using Layout = sonivex::Layout;

    static constexpr std::size_t kAgents = 24;

    explicit ConvolveReverbInspector(ConvolveReverb& reverb) : reverb_(reverb) {}

    int channels() const { return reverb_.channels; }
    std::uint64_t headBlockSize() const { return reverb_.headBlockSize; }
    std::uint64_t tailBlockSize() const { return reverb_.tailBlockSize; }
    /** The longest block. */
    std::size_t blockFrames() const { return reverb_.block_frames_; }

    /** The layout that the loudspeakers' stage is set up for, or null. kAudio has a stage of its own. */
    const Layout* layout() const { return reverb_.layout_stage_.layout; }
    bool hasAudioStage() const { return reverb_.audio_stage_.layout == &sonivex::kAudio; }
    /** Of the loudspeakers' stage and of the Audio stage, in the order of their tables. */
    Responses responses() const { return reverb_.layout_stage_.responses; }
    Responses audio() const { return reverb_.audio_stage_.responses; }
    std::size_t loadedSets() const { return (responses().empty() ? 0U : 1U) + (audio().empty() ? 0U : 1U); }

    /** Whether a source of a stage that is set up has this agent. */
    bool isSetUp(std::size_t number) const {
        const auto agent = static_cast<int>(number);
        for (const Layout* const layout : {reverb_.layout_stage_.layout, reverb_.audio_stage_.layout}) {
            if (layout == nullptr) continue;
            for (const sonivex::Source& source : layout->sources) {
                if (source.left_agent == agent || source.right_agent == agent) return true;
            }
        }
        return false;
    }

    /** Gives every agent of a stage that is set up one tap in place of its response, and silence before. */
    void plantGains(const Layout& layout, const std::function<float(std::size_t)>& gain_of) {
        std::array<float, kAgents> gains{};
        std::array<sonivex::Taps, kAgents> taps{};
        for (std::size_t agent = 0; agent < kAgents; ++agent) {
            gains[agent] = gain_of(agent);
            taps[agent] = {&gains[agent], 1};
        }
        const auto block_frames = static_cast<std::size_t>(reverb_.headBlockSize);
        const std::size_t bytes = sonivex::SourceBanks::bytesOf(layout.sources, taps, block_frames);
        reverb_.stageOf(layout).banks.build(
            layout.sources, taps, std::make_shared<sonivex::ConvolutionMemory>(block_frames, bytes));
    }

  private:
    ConvolveReverb& reverb_;
};
