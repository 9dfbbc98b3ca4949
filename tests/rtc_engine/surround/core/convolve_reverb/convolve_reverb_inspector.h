#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>

#include "convolve_reverb.h"
#include "layouts.h"

/** Gives tests access to the internals of a ConvolveReverb. */
class ConvolveReverbInspector {
  public:
    using Responses = std::span<const ConvolveReverb::Response>;
    using Layout = sonivex::Layout;

    static constexpr std::size_t kAgents = 24;

    explicit ConvolveReverbInspector(ConvolveReverb& reverb) : reverb_(reverb) {}

    int channels() const { return reverb_.channels; }
    std::uint64_t headBlockSize() const { return reverb_.headBlockSize; }
    std::uint64_t tailBlockSize() const { return reverb_.tailBlockSize; }
    /** Length of the longest block that the reverb is set up for. */
    std::size_t blockFrames() const { return reverb_.block_frames_; }

    /** The layout of the loudspeaker stage; null if the stage is not set up. kAudio has its own stage. */
    const Layout* layout() const { return reverb_.layout_stage_.layout; }
    bool hasAudioStage() const { return reverb_.audio_stage_.layout == &sonivex::kAudio; }
    /** Responses of the loudspeaker stage, in the order of its tables. */
    Responses responses() const { return reverb_.layout_stage_.responses; }
    /** Responses of the Audio stage, in the order of its tables. */
    Responses audio() const { return reverb_.audio_stage_.responses; }
    std::size_t loadedSets() const { return (responses().empty() ? 0U : 1U) + (audio().empty() ? 0U : 1U); }

    /** True if a source of either stage has this agent. */
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

    /** Replaces the response of every agent in the stage of `layout` by a single tap and clears the stage's
     *  history. */
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
