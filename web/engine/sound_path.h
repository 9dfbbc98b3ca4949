// One sound that the page can choose: the input, folded to stereo for an engine that takes no more, the
// engine, and a delay. The engine comes before the delay, because its blocks must begin where the input
// begins: the limiter acts on whole blocks.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "crossfade.h"
#include "dry_path.h"
#include "sonivex/effect.h"

namespace sonivex_web {

using sonivex_lv2::ConstPlanes;
using sonivex_lv2::Planes;

inline constexpr int kOutputChannels = 2;

/** The longest call of SoundPath::render and Rack::render, in frames. */
inline constexpr int kMost_frames = 256;

struct EngineRelease {
    void operator()(SonivexEffect* engine) const { sonivex_release(engine); }
};
using Engine = std::unique_ptr<SonivexEffect, EngineRelease>;

/** A path from the input's channels to stereo. */
class SoundPath {
  public:
    /** @param channels       of the input: 2, 6 or 8.
     *  @param engine         for `channels` or for stereo. Null for the original sound, folded to stereo.
     *  @param latency_frames of the whole path, at least the engine's.
     *  [main] */
    SoundPath(int channels, Engine engine, int latency_frames);

    /** Makes everything inside silent. [audio] real-time safe */
    void reset();

    /** @param in  [channels][frames].
     *  @param out [2][frames], overwritten. Must not overlap `in`.
     *  @param frames at most kMost_frames.
     *  [audio] real-time safe */
    void render(ConstPlanes in, Planes out, int frames);

    /** [any] real-time safe */
    int latency_frames() const { return latency_frames_; }
    /** Frames after which the output no longer depends on what came before them, up to the state of a gain.
     *  [any] real-time safe */
    int memory_frames() const;

  private:
    using StereoPlanes = std::array<float*, kOutputChannels>;

    int latency_frames_;
    Engine engine_;
    bool folds_;
    sonivex_lv2::DryPath fold_;
    sonivex_lv2::DryPath delay_;
    std::array<std::array<float, kMost_frames>, kOutputChannels> folded_{};
    std::array<std::array<float, kMost_frames>, kOutputChannels> early_{};  // the engine's output
};

}  // namespace sonivex_web
