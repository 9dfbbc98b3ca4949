#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "conditioner.h"
#include "effect_chain.h"
#include "effect_choice.h"
#include "loudness_match.h"
#include "programme.h"
#include "stereo_queue.h"

namespace sonivex_tool {

/** One choice of effects at work on the programme: filters of their own, the conversions around them, and the
 *  matching of their loudness. The output is aligned with the programme to the sample.
 *
 *  A filter that fails, or that its load guard bypasses, makes the path lost: it takes no more of the
 *  programme. */
class EffectPath {
  public:
    /** Makes the filters. The path begins with the programme's oldest remembered frame.
     *  @param video_fps of the video that the load guard is told of
     *  @throw Failure (UnsupportedAudio, FilterFailed) if there is no such path */
    EffectPath(const EffectChoice& choice, std::optional<double> video_fps,
               const std::shared_ptr<Vorlin::Plugin>& plugin, const Programme& programme);
    EffectPath(const EffectPath&) = delete;
    EffectPath& operator=(const EffectPath&) = delete;

    /** Takes up to `most_frames` (and one frame more) of the programme, and its end.
     *  @param original the programme in stereo, for the matching of loudness
     *  @throw std::bad_alloc */
    void follow(const Programme& programme, const StereoQueue& original, int64_t most_frames);
    /** Returns true if the path has taken all of the programme that was read. */
    bool isUpToDate(const Programme& programme) const;
    /** Begins anew after the programme's seek: flushes the filters. */
    void seek(const Programme& programme);

    /** Returns the position after the last frame of the output. */
    int64_t end() const { return output_.end(); }
    /** Copies output. See StereoQueue::read. */
    void read(int64_t position, float* samples, int frames) const { output_.read(position, samples, frames); }
    /** Drops the output before `position`, except what is not measured yet. */
    void dropBefore(int64_t position);

    /** Returns why the path is lost; empty if it is not. */
    const std::string& lossReason() const { return loss_reason_; }
    /** Returns the number of the programme's next frame for this path. */
    uint64_t nextFrame() const { return next_frame_; }
    const EffectChoice& choice() const { return choice_; }
    /** Returns the newest reading, by which gains are set. */
    const MatchReading& match() const { return match_->reading(); }
    /** Returns the reading at a position, which the meters show when it is heard. Readings of earlier
     *  positions are forgotten. */
    const MatchReading& readingAt(int64_t position);
    /** Returns the processor time of the filters and of the conversions around them, as a share of the
     *  sound's time, over the last second or so. */
    double cpuShare() const { return audio_s_ > 0.0 ? cpu_s_ / audio_s_ : 0.0; }
    /** Returns the frames of silence that replaced calls which the filters dropped. */
    int64_t filledFrames() const { return chain_->counts().filled_frames; }

  private:
    struct PlacedReading {
        int64_t position = 0;
        MatchReading reading;
    };

    void push(const AVFrame& frame);
    void finish();
    void run(const std::function<void()>& work, int64_t frames);
    void measure(const StereoQueue& original);

    EffectChoice choice_;
    ConversionPlan plan_;
    std::optional<Conditioner> conditioner_;
    FormatConverter to_stereo_;
    std::unique_ptr<EffectChain> chain_;
    int rate_hz_;
    uint64_t next_frame_;
    bool is_finished_ = false;
    StereoQueue output_;
    int64_t measured_until_;
    std::optional<LoudnessMatch> match_;
    std::deque<PlacedReading> readings_;
    std::string loss_reason_;
    double cpu_s_ = 0.0;
    double audio_s_ = 0.0;
};

}  // namespace sonivex_tool
