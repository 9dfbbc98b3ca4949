#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

#include "render.h"
#include "timeline.h"
#include "vorlin/player.h"

namespace sonivex_tool {

/** One file's way through the filter: frames of one length go in, and what comes out stands in line with
 * them. */
class FilterRun {
  public:
    /** @param output receives what comes out, aligned with what went in.
     *  @throw Failure (FilterFailed), here and below; and whatever `output` throws */
    FilterRun(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
              const AudioSpec& spec, Timeline::Output output);

    /** How late the filter's output is, in frames. */
    int64_t delayFrames() const { return delay_frames_; }
    /** Whether the filter passes everything on untouched, at the frame rate and speed that it was told. */
    bool isBypassed() const { return player_->isBypassed(); }

    /** Hand in the next frame; all have one length. Where the settings ask for it the filter is flushed
     * before: what went in so far comes out, but for what the effect still held back, in whose place silence
     * comes. */
    void push(FramePtr frame);

    /** The audio ends after `frames` frames: what comes out is cut there. Called before the frames of silence
     * that drive the rest out. */
    void setEnd(int64_t frames);

    /** Wait for everything pushed to come out. */
    void finish();

    /** Frames of silence that stand in place of calls that the filter gave up. */
    int64_t filledFrames() const { return timeline_.filledFrames(); }

    const Vorlin::PlayerCounts& counts() const { return player_->counts(); }

  private:
    void flushWhenDue();
    void receive(std::unique_ptr<Vorlin::IQFFrame> frame);
    void check(int result);

    AudioSpec spec_;
    /** The effect takes channels by position and hands out as many. A named layout would only make the filter
     * remix them to the default layout of their count, so it is kept from the filter. */
    bool keeps_channels_;
    int64_t delay_frames_;
    int call_frames_;
    Timeline timeline_;
    int64_t pushed_frames_ = 0;
    std::vector<int64_t> flushes_;     // frames before each flush that is still to come, the next one last
    std::exception_ptr output_error_;  // kept until the player's call has returned
    std::unique_ptr<Vorlin::Player> player_;
};

}  // namespace sonivex_tool
