// Every sound that the page can choose, and the change from one to another without a click:
//
//   steady      one path sounds
//   listening   the next path hears the input as well, until it puts out what it would if it had always been
//               there
//   fading      both sound, under a crossfade; then the next one sounds alone
//
// All paths are equally late, so a change shifts nothing. All engines are made at the start: no change
// allocates, and the audio thread of a browser has nobody who could make an engine for it.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "crossfade.h"
#include "sound_path.h"

namespace sonivex_web {

inline constexpr int kMostChannels = 8;

/** Names the sound that the page chooses. A value out of range counts as the nearest that is allowed. */
struct Choice {
    int effect = SONIVEX_SURROUND;  // SONIVEX_SURROUND, SONIVEX_NORMALIZER, or 0 for the original sound
    int type = 1;                   // surround: 1 or 13
    int mode = 1;                   // type 13: 1..3
    int limiter = 1;                // surround: 0 or 1
};

/** The paths of one input. One thread at a time may use it. */
class Rack {
  public:
    /** Makes all engines.
     *  @param channels       2, 6 or 8.
     *  @param sample_rate_hz 44100 or 48000.
     *  @param status receives a SonivexStatus.
     *  @return null after an error. [main] */
    static std::unique_ptr<Rack> make(int channels, int sample_rate_hz, int& status);

    /** Makes everything silent and completes a change that is under way. [audio] real-time safe */
    void reset();

    /** Begins a change to another sound. The newest choice wins; a fade that has begun ends first. Before the
     *  first frame after reset() the change is immediate. [audio] real-time safe */
    void choose(const Choice& choice);

    /** Renders the next frames, latency_frames() late.
     *  @param in  [channels][frames], overwritten: a sample that is not finite, or above 120 dB over full
     *             scale, becomes 0.
     *  @param out [2][frames], overwritten. Must not overlap `in`.
     *  @param frames at most kMost_frames.
     *  [audio] real-time safe */
    void render(Planes in, Planes out, int frames);

    /** [any] real-time safe */
    int latency_frames() const;
    /** [any] real-time safe */
    int channels() const { return channels_; }
    /** Whether a change is under way. [audio] real-time safe */
    bool isChanging() const { return stage_ != Stage::kSteady || current_ != wanted_; }

  private:
    enum class Stage { kSteady, kListening, kFading };
    // Original; normalizer; 3DSurround and MegaBass in its three rooms, each with clipping and with limiter.
    static constexpr std::size_t kPaths = 10;

    Rack(int channels, int sample_rate_hz);
    static std::size_t pathOf(const Choice& choice);
    int makePaths(int sample_rate_hz);
    void follow();
    void fade(Planes out, int first, int frames);

    int channels_;
    std::array<std::unique_ptr<SoundPath>, kPaths> paths_;
    sonivex_lv2::Crossfade fade_;
    Stage stage_ = Stage::kSteady;
    std::size_t current_ = 0;
    std::size_t next_ = 0;  // while listening and fading
    std::size_t wanted_ = 0;
    bool has_sounded_ = false;  // since reset()
    int listening_frames_ = 0;  // left
    std::array<std::array<float, kMost_frames>, kOutputChannels> next_samples_{};
};

}  // namespace sonivex_web
