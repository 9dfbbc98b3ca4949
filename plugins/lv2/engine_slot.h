// The engine that sounds, and its change to another one without a click:
//
//   steady      the engine sounds
//   listening   a new engine hears the input as well, for its delay and its tail, but is not heard:
//               afterwards it puts out what it would if it had always been there
//   fading      both sound, under a crossfade; then the old engine goes
//
// The newest settings win. Before the first frame after reset() the new engine replaces the old one at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "crossfade.h"
#include "engine_maker.h"

namespace sonivex_lv2 {

/** The longest call of EngineSlot::render, in frames. */
inline constexpr int kPiece_frames = 256;

/** The engines of one instance. */
class EngineSlot {
  public:
    /** Takes over the first engine, which has the default settings. Throws std::bad_alloc. */
    EngineSlot(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host, Engine first,
               int fade_frames);

    /** Makes everything inside silent. A change that is under way is completed. [main] */
    void reset();

    /** Goes on with a change to these settings, or begins one.
     *  [audio] real-time safe if the host has a worker */
    void follow(const Settings& wanted);

    /** Sets the level of dialogue enhancement. [audio] real-time safe */
    void setVoiceLevel(double level);

    /** Processes the next frames with the delay latency_frames().
     *  @param in  [channels_in][frames].
     *  @param out [channels_out][frames], overwritten. Must not overlap `in`.
     *  @param frames at most kPiece_frames.
     *  [audio] real-time safe, as sonivex_stream_float is */
    void render(ConstPlanes in, Planes out, int frames);

    /** [audio] real-time safe */
    int latency_frames() const { return sonivex_stream_latency_frames(current_.get()); }

    /** @see EngineMaker::work */
    LV2_Worker_Status work(std::uint32_t size, const void* data) { return maker_.work(size, data); }

  private:
    enum class Stage { kSteady, kListening, kFading };

    void dropNextUnless(const Settings& wanted);
    void takeMade(const Settings& wanted);
    void begin(Engine engine);
    void complete();
    void fade(Planes out, int first, int frames);

    EngineMaker maker_;
    Crossfade fade_;
    Stage stage_ = Stage::kSteady;
    Engine current_;
    Engine next_;  // while listening and fading
    Engine old_;   // until the maker takes it
    Settings current_settings_;
    Settings next_settings_;
    std::optional<Settings> refused_;  // for which memory ran out
    bool has_sounded_ = false;         // since reset()
    int listening_frames_ = 0;         // left
    std::size_t channels_out_;
    std::vector<float> next_samples_;
    std::array<float*, kMostChannels> next_planes_{};
};

}  // namespace sonivex_lv2
