#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "effect_choice.h"
#include "effect_path.h"
#include "fade.h"
#include "play_action.h"
#include "play_status.h"
#include "programme.h"

namespace sonivex_tool {

/** Tells a Playback what to play and how to begin. */
struct PlaybackSettings {
    InputSettings input;
    EffectChoice choice;
    double start_s = 0.0;
    double volume_db = 0.0;  // 0 or less
    bool hears_effect = true;
    bool is_matching = true;
    std::optional<double> video_fps;  // of which the load guard is told
};

// The path of the sound, in stereo floats after the effects:
//
//   Programme --+-> original --> gain --------------------------------+-> A/B -> volume -> clip -> out
//  (reads ahead)+-> EffectPath --> gain --------+-> crossfade --------+
//               +-> next EffectPath --> gain ---+
//
// The original and the effect run all the time, aligned to the sample. A switch is a crossfade of 40 ms
// between the two; a new choice of effects first hears the last half second and then is crossfaded in; a
// pause or a seek fades out and in.
// Everything is computed half a second ahead of what is heard, so that the loudness is known when it begins,
// and a lost filter is faded out while its output lasts.

/** Plays a file through the filter into a buffer, as fast as the caller asks. One thread at a time
 *  uses it. */
class Playback {
  public:
    /** Opens the file and makes the filter.
     *  @throw Failure as Programme and EffectPath do, std::bad_alloc; the other functions too */
    Playback(const PlaybackSettings& settings, std::shared_ptr<Vorlin::Plugin> plugin);

    /** Renders the next frames.
     *  @param samples [frames][2], within -1..1
     *  @return frames rendered; fewer than asked only at the end */
    int render(float* samples, int frames);

    /** Does what a key does. Quit fades out and then ends, whatever keys follow it. */
    void act(PlayAction action);
    /** Goes to another position, which is clamped to the file's length if that is known. */
    void seekTo(double seconds);

    /** Returns the sample rate of what is rendered. */
    int rate_hz() const { return programme_.spec().rate_hz; }
    const SourceInfo& info() const { return programme_.info(); }
    DamageReport damage() const { return programme_.damage(); }
    /** Returns true if the file was read to its end, so that `damage` is complete. */
    bool hasReadAll() const { return programme_.isAtEnd(); }

    /** Returns the state at the position that was rendered last. */
    PlayStatus status();
    /** Returns what has happened since the last call. */
    std::vector<PlayEvent> takeEvents();

    /** Makes `render` end soon. Any thread may call it. */
    void abandon() { programme_.abandon(); }

  private:
    void choose(const std::optional<EffectChoice>& choice, const std::string& refusal);
    void toggleEffect();
    void note(const std::string& text);
    void checkPaths();
    void beginNext();
    void fill();
    void doSeek();
    int64_t available() const;
    void forget();
    void mix(float* samples, int frames);
    bool isEffectHeard() const { return wants_effect_ && path_->lossReason().empty(); }
    std::string guardText() const;

    std::shared_ptr<Vorlin::Plugin> plugin_;
    std::optional<double> video_fps_;
    std::vector<std::vector<const Effect*>> chains_;  // through which "next effect" goes
    Programme programme_;
    FormatConverter to_stereo_;
    StereoQueue original_;
    uint64_t next_frame_ = 0;  // of the programme, for the original
    std::unique_ptr<EffectPath> path_;
    std::unique_ptr<EffectPath> next_path_;  // runs up, and then is crossfaded in
    std::optional<EffectChoice> wanted_;     // to be made when there is room for a next path
    int64_t position_ = 0;                   // of the next frame to render
    std::optional<double> seek_target_s_;
    bool wants_effect_;
    bool is_matching_;
    bool is_paused_ = false;
    bool is_quitting_ = false;
    double volume_db_;
    Fade whole_;      // everything: pauses and seeks
    Fade listening_;  // 0: the original, 1: the effect
    Fade next_;       // 0: path_, 1: next_path_
    float volume_;    // smoothed gains, linear
    float original_gain_ = 1.0F;
    float path_gain_ = 1.0F;
    float next_gain_ = 1.0F;
    bool are_gains_set_ = false;  // false: the next block takes the gains as they are found
    PeakHold output_peak_;
    uint64_t clipped_samples_ = 0;
    int64_t reported_filled_frames_ = 0;
    bool is_loss_reported_ = false;
    std::vector<PlayEvent> events_;
    std::vector<float> original_block_;
    std::vector<float> path_block_;
    std::vector<float> next_block_;
};

}  // namespace sonivex_tool
