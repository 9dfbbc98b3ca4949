#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/api.h"
#include "vorlin/filter.h"
#include "vorlin/plugin.h"

namespace Vorlin {

/** Longest call that a Player makes, in frames. An effect's queue holds 81919 samples of all channels. */
inline constexpr int kLongestCall_frames = 8192;

/** Settings with which a Player is made. */
struct PlayerConfig {
    std::string filter_name = "sonivex";  // a registered prototype must support this name
    bool active = true;                   // true: the filter works on its own thread; false: inside `push`
    IQFFrame::audioInfo source{};         // the stream, as far as it is known
    std::chrono::milliseconds stall_limit{10'000};  // longest wait for a filter that moves no frame

    // Frames (instants of all channels) in each call of the filter. The player joins shorter frames and
    // splits longer ones. With 0 they go in as they come: a threaded filter then cannot keep up with frames
    // of a few milliseconds, and a long frame makes an effect late by its own length. At most
    // kLongestCall_frames.
    int call_frames = 1024;
    // Gives the filter's sound the time at which it belongs. Otherwise it stays as late as the effect makes
    // it, and the end of the stream is missing. A filter tells how late it is by ITimedFilter.
    bool corrects_times = true;
    // Delivers what an effect still sounds after the end of the stream, as frames of their own (`drain`).
    // Needs `corrects_times`.
    bool delivers_tail = true;
    // The time base of frames that do not tell theirs (AVFrame::time_base); {0, 1} if it is unknown. The
    // player needs it for times that it makes itself: those of the tail, of a frame without a time, and of a
    // part of a frame.
    AVRational time_base{0, 1};
};

/** Counts of the calls of the filter, by their fate. With `call_frames` and `corrects_times` both off, a call
 *  is a frame that was pushed; otherwise it is one that the player made. A frame that holds no audio is a
 *  call of its own. */
struct PlayerCounts {
    uint64_t pushed = 0;     // taken by the filter
    uint64_t pulled = 0;     // came out of the filter
    uint64_t bypassed = 0;   // pushed while the filter was set invalid
    uint64_t dropped = 0;    // given up by the filter; counted by `drain`
    uint64_t discarded = 0;  // thrown away by `seek`, by a change of format or without memory
    uint64_t flushes = 0;    // flushes of the filter, for the same three reasons; not calls
};

/** Drives one filter as a media player does: the part of a player that handles one filter.
 *
 *  A player answers kTryAgain by pulling, reports to the load guard how long the filter worked, and obeys the
 *  filter's events. It flushes on a seek. On a change of sample rate, layout or sample format it lets the old
 *  frames out first, then flushes. At the end of the stream, `drain` lets the last frames out.
 *
 *  The frames that come out are the objects that were pushed, in the same order, with their own length,
 *  times, metadata and side data; only their samples are the filter's. An effect that is late gets them
 *  together with later frames, so a frame may come out several pushes after it went in. In these cases more
 *  or other frames come out:
 *    - the tail: frames of `call_frames` at the end of the stream;
 *    - a frame in parts, if the format or the channels of its samples change in its middle, because the
 *      filter was bypassed or switched on there, or if the filter gave up a part of it. A part is a new frame
 *      with the properties of the whole, and with its own time and duration;
 *    - a frame that has no time gets the one that follows from the frames before it.
 *  A frame in which the times jump by more than 100 ms, a frame without samples that can be joined (of a
 *  class other than AVQFFrame, or with samples that do not match its description) and a change of format let
 *  everything before them out first. The silence of a jump leaves room for the tail, as far as it goes.
 *  Whatever an effect still holds when it is bypassed or replaced by another effect comes out untouched.
 *
 *  One thread calls every function. `output` and the filter's events run on the same thread. */
class VORLIN_API Player {
  public:
    /** Receives every frame that comes out, in order. It must not call the player that calls it. */
    using Output = std::function<void(std::unique_ptr<IQFFrame>)>;

    /** Clones the filter that answers to `config.filter_name`, initialises it and sets it valid.
     *  @param plugin the library of the filter, held as long as the clone; null if it is linked in.
     *  @return null if no registered filter answers to the name, if it fails to initialise, if
     *  `config.call_frames` is out of range, or without memory.
     *  [player thread] not real-time safe: takes a lock, allocates, starts the worker of an active filter */
    static std::unique_ptr<Player> create(std::shared_ptr<Plugin> plugin, const PlayerConfig& config,
                                          Output output);

    /** Destroys the filter with the frames inside, then lets go of its library.
     *  [player thread] not real-time safe: waits for the worker, frees memory */
    virtual ~Player();

    /** Sets the filter's options.
     *  They count from the next frame on: what waits to be joined goes into the filter first, as a shorter
     *  call, and what the effect has finished comes out. What the effect still holds (its delay, and less
     *  than a block at the end) comes out untouched if another effect replaces it, otherwise with the sound
     *  that follows. With `corrects_times` off, the frames that wait to be joined get the new options.
     *  @param json a JSON object, see docs/options.md.
     *  @return false if the filter did not understand the text or has no memory for it. Without memory the
     *  frames under way may be thrown away, as by `seek`.
     *  [player thread] not real-time safe: waits for the filter, runs the output, allocates, may log */
    virtual bool setOptions(const std::string& json) = 0;
    /** Reports the video's frame rate, in frames per second. A filter that was bypassed because the rate was
     *  too high is set valid to receive the number, and stays valid only if it announces its recovery.
     *  Without memory the number is reported again by the next `push`.
     *  [player thread] not real-time safe: allocates, may log */
    virtual void setVideoFps(double fps) = 0;
    /** Reports the playback speed (1.0 = normal), with the same effect as a frame rate.
     *  [player thread] not real-time safe: allocates, may log */
    virtual void setSpeed(double speed) = 0;

    /** Sets the listener's own switch: true passes frames through untouched.
     *  [player thread] not real-time safe: may log */
    virtual void setBypass(bool bypass) = 0;
    /** Processes frames again after the filter was bypassed for taking too long. The player never does this
     *  by itself.
     *  [player thread] not real-time safe: may log */
    virtual void retryAfterOverload() = 0;
    /** @return true if the filter is set invalid, for whatever reason. [player thread] real-time safe */
    virtual bool isBypassed() const = 0;

    /** Hands in the next frame of the stream. Frames that are ready go to the output meanwhile.
     *  @return kSuccess. Otherwise `frame` or a part of it is lost: AVERROR(ETIMEDOUT) if the filter moved no
     *  frame within the stall limit, AVERROR(EINVAL) for a null frame, AVERROR(ENOMEM) if memory ran out
     *  (the frames under way may then be thrown away, too, as by `seek`), or the filter's own error.
     *  [player thread] not real-time safe: waits for room in the filter, runs the output */
    virtual int push(std::unique_ptr<IQFFrame> frame) = 0;
    /** Ends the stream: waits until every frame pushed so far has come out or been given up, and then the
     *  tail, if `delivers_tail`. A frame that is pushed later continues the stream; the effect has then heard
     *  silence.
     *  @return kSuccess, AVERROR(ETIMEDOUT) or the filter's own error as from `push`, or AVERROR(ENOMEM).
     *  [player thread] not real-time safe: waits, allocates, runs the output */
    virtual int drain() = 0;
    /** Throws away the frames inside the filter, those that wait to be joined, and the filter's history.
     *  [player thread] not real-time safe: waits for the worker, frees memory */
    virtual void seek() = 0;

    /** @return the counts so far, valid as long as this object. [player thread] real-time safe */
    virtual const PlayerCounts& counts() const = 0;
    /** @return the filter, which this object owns. [player thread] real-time safe */
    virtual IAudioFilter& filter() = 0;
};

}  // namespace Vorlin
