#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

#include "filter_settings.h"
#include "timeline.h"
#include "vorlin/player.h"

namespace sonivex_tool {

/** Runs audio through one filter with one effect and aligns the output with the input.
 *
 *    FilterRun run(settings, effect, plugin, spec, output);
 *    for each call of settings.call_frames frames:  run.push(frame);
 *    run.setEnd(frames);
 *    push silence for at least run.delayFrames() frames;
 *    run.finish();
 *
 *  With `settings.threaded` the filter works on a thread of its own; `output` still runs on the caller's. */
class FilterRun {
  public:
    /** @param effect the one to switch on.
     *  @param output receives the filter's output, aligned with the input.
     *  @throw Failure (FilterFailed), from the functions below too; and whatever `output` throws */
    FilterRun(const FilterSettings& settings, const Effect& effect,
              const std::shared_ptr<Vorlin::Plugin>& plugin, const AudioSpec& spec, Timeline::Output output);

    /** Returns the delay of the filter's output in frames; 0 if it was bypassed from the start. */
    int64_t delayFrames() const { return delay_frames_; }
    /** Returns true if the filter passes all audio through: at a video frame rate or playback speed that is
     *  too high for it, or after an overload. */
    bool isBypassed() const { return player_->isBypassed(); }

    /** Pushes the next frame, which must have `settings.call_frames` frames. Flushes the filter first if the
     *  settings place a flush within this call: the output of all earlier calls comes out, and silence
     *  replaces the audio that the effect still holds back. */
    void push(FramePtr frame);

    /** Flushes the filter, as a player does at a seek. The audio inside is lost, and the next frame counts as
     *  the first one: the output is aligned with it. */
    void seek();

    /** Sets the length of the output in frames; everything later is cut, and flushes from there on are
     *  dropped. Call it before pushing the silence that drives the rest out. */
    void setEnd(int64_t frames);

    /** Waits until the output of everything pushed has come out. */
    void finish();

    /** Returns the frames of silence that replaced the calls that the filter dropped. */
    int64_t filledFrames() const { return timeline_.filledFrames(); }

    /** Returns the player's frame counts; one frame is one call. */
    const Vorlin::PlayerCounts& counts() const { return player_->counts(); }

  private:
    void flushWhenDue();
    void receive(std::unique_ptr<Vorlin::IQFFrame> frame);
    void check(int result);

    AudioSpec spec_;
    /** True if the effect keeps the channel count. It then processes channels by position alone. The filter
     *  would remix a named layout to the default layout of its channel count, so the layout is hidden from
     *  the filter and restored on its output. */
    bool keeps_channels_;
    int64_t delay_frames_;
    int call_frames_;
    Timeline timeline_;
    int64_t pushed_frames_ = 0;
    std::vector<int64_t> flushes_;     // input positions of the pending flushes in frames, the next one last
    std::exception_ptr output_error_;  // kept until the player's call has returned
    std::unique_ptr<Vorlin::Player> player_;
};

}  // namespace sonivex_tool
