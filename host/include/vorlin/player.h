#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/api.h"
#include "vorlin/filter.h"
#include "vorlin/plugin.h"

namespace Vorlin {

struct PlayerConfig {
    std::string filter_name = "sonivex";  // name that a registered prototype must support
    bool active = true;            // true: the filter works on a thread of its own; false: inside `push`
    IQFFrame::audioInfo source{};  // what the stream holds, as far as it is known
    std::chrono::milliseconds stall_limit{10'000};  // a filter that moves no frame for so long has failed
};

/** What became of the frames that a Player was given. */
struct PlayerCounts {
    uint64_t pushed = 0;     // taken by the filter
    uint64_t pulled = 0;     // handed to the output
    uint64_t bypassed = 0;   // pushed while the filter was set invalid
    uint64_t dropped = 0;    // given up by the filter; known after `drain`
    uint64_t discarded = 0;  // thrown away by `seek`
    uint64_t flushes = 0;    // of the filter, by `seek` and by changes of format
};

/** Drives one filter as a media player does: the half of a player that stands around a filter.
 *
 *  Answers "try again" by pulling, feeds the load guard the time that the filter worked, obeys its events,
 *  flushes on a seek and on a change of rate, layout or sample format (after letting the old frames out), and
 *  drains. Every function is called from one thread, on which `output` and the filter's events run too. */
class VORLIN_API Player {
  public:
    /** Receives every frame that comes out, in order. Must not call the player that calls it. */
    using Output = std::function<void(std::unique_ptr<IQFFrame>)>;

    /** Clone the filter that answers to `config.filter_name`, initialise it and set it valid.
     *  @param plugin the library that the filter comes from, held as long as the clone; null when it is
     *  linked in.
     *  @return null when no registered filter answers to the name or it fails to initialise. */
    static std::unique_ptr<Player> create(std::shared_ptr<Plugin> plugin, const PlayerConfig& config,
                                          Output output);

    virtual ~Player();

    /** Set the filter's options, a JSON object. @return false when the filter did not understand the text. */
    virtual bool setOptions(const std::string& json) = 0;
    /** Report the video's frame rate and the playback speed (1.0 = normal). A filter that was bypassed for
     *  too high a rate is made valid to hear it, and stays valid only if it announces its recovery. */
    virtual void setVideoFps(double fps) = 0;
    virtual void setSpeed(double speed) = 0;

    /** The listener's own switch: true passes frames through untouched. */
    virtual void setBypass(bool bypass) = 0;
    /** Try again after the filter was bypassed for taking too long; it is not done by itself. */
    virtual void retryAfterOverload() = 0;
    /** Whether the filter is set invalid, for whatever reason. */
    virtual bool isBypassed() const = 0;

    /** Hand in the next frame of the stream; frames that are ready go to the output meanwhile.
     *  @return 0, AVERROR(ETIMEDOUT) when the filter moved nothing within the stall limit, AVERROR(EINVAL)
     *  for a null frame, or the filter's own error; `frame` is lost then. */
    virtual int push(std::unique_ptr<IQFFrame> frame) = 0;
    /** Wait until every frame pushed so far has come out or been given up. @return as `push`, or
     *  AVERROR(ENOMEM). */
    virtual int drain() = 0;
    /** Throw away what is under way and the filter's history. */
    virtual void seek() = 0;

    virtual const PlayerCounts& counts() const = 0;
    virtual IAudioFilter& filter() = 0;
};

}  // namespace Vorlin
