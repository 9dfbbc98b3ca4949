#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/frame.h"
#include "vorlin/results.h"

namespace Vorlin {

/** The interface of every filter of a player, in the order of its virtual table. The player's thread makes
 *  all calls. */
class VORLIN_API IFilter {
  public:
    IFilter() = default;
    IFilter(const IFilter&) = delete;
    IFilter& operator=(const IFilter&) = delete;
    /** Stops the worker, and frees everything inside. [player thread] not real-time safe: frees memory */
    virtual ~IFilter();

    /** Sets an option. The keys are constants of filterPrototype. A filter may ignore `extra`.
     *  @return false if the filter knows the key but does not understand the value.
     *  [player thread] not real-time safe: may allocate, log and run the event callback */
    virtual bool setOption(const std::string& key, const std::string& value, const std::string& extra) = 0;
    /** Makes the filter ready. An active filter starts its worker here.
     *  @return true if the filter is ready.
     *  [player thread] not real-time safe: may start a thread, allocate and log */
    virtual bool init(uint64_t flags) = 0;
    /** Hands a frame in.
     *  @param timeOut how long to wait for room, in milliseconds; a filter may ignore it.
     *  @return kSuccess with the frame taken, or kTryAgain (-35) with the frame left to the caller, who pulls
     *  and tries again.
     *  [player thread] real-time safe only if the filter says so: an inactive filter does its work here */
    virtual int push(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) = 0;
    /** Takes the oldest frame that is ready.
     *  @param timeOut how long to wait for one, in milliseconds; a filter may ignore it.
     *  @return kSuccess with `frame` replaced, or kTryAgain (-35) with `frame` untouched if none is ready.
     *  [player thread] real-time safe only if the filter says so */
    virtual int pull(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) = 0;
    /** Destroys every frame inside and forgets all history, as a seek requires.
     *  [player thread] not real-time safe: waits for the worker, frees memory */
    virtual void flush() = 0;
    /** @return the filter's name, with which its events begin.
     *  [any, concurrent] not real-time safe: may allocate */
    virtual std::string getName() = 0;
};

/** The interface of an audio filter: IFilter, and the calls by which a player finds, copies, bypasses and
 *  watches one. */
class VORLIN_API IAudioFilter : public IFilter {
  public:
    /** Receives the code and the text of an event. */
    using EventCallback = std::function<void(int code, const std::string& event)>;

    /** Makes a prototype, which is inactive and knows no stream. [any, concurrent] real-time safe */
    IAudioFilter() = default;
    /** Makes a working filter.
     *  @param src, dst the audio that comes in, and the audio that is wanted.
     *  @param active   true if `init` starts a worker thread; an inactive filter works inside `push`.
     *  [any, concurrent] real-time safe */
    IAudioFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active);
    /** See ~IFilter. [player thread] not real-time safe: frees memory */
    ~IAudioFilter() override;

    /** @return true if the filter answers to `name`. The integers are codec hints, which a filter may ignore.
     *  [player thread]; the registry calls it on a prototype from any thread, one at a time. Real-time safe
     *  only if the filter says so */
    virtual bool is_supported(const std::string& name, int codec, int profile, int level) = 0;
    /** Makes a working filter, which the caller owns.
     *  [player thread]; the registry calls it on a prototype from any thread, one at a time. Not real-time
     *  safe: allocates */
    virtual IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) = 0;
    /** Passes every frame through untouched from now on (true), or processes frames again (false).
     *  [player thread] not real-time safe: may log */
    virtual void setInvalid(bool invalid) = 0;
    /** @return true if the filter is set invalid, but only if the filter overrides this; the base class
     *  always returns false. A player therefore keeps its own record of what it set.
     *  [player thread] real-time safe */
    virtual bool isInvalid();
    /** Installs the callback for events "<filter name>:<event>"; filterPrototype lists the events. The
     *  callback runs on the player's thread, inside `setOption`, `isOverFps` or `checkTimeConsume`. It must
     *  not call `setOption` of the same filter.
     *  [player thread] not real-time safe: may allocate */
    virtual void setDCA(const EventCallback& callback);
    /** Tells the filter what is being played. [player thread] not real-time safe: may allocate */
    virtual void setCurrentTarget(const std::string& target) = 0;
    /** @return true if the video's frame rate at the current speed is too high for the filter. May send an
     *  event.
     *  [player thread] not real-time safe: may run the event callback */
    virtual bool isOverFps() = 0;
    /** Reports how long the filter worked on one frame.
     *  @param elapsed milliseconds of work, without the time in which the worker slept. May send an event.
     *  [player thread] not real-time safe: may run the event callback, allocate and log */
    virtual void checkTimeConsume(uint64_t elapsed) = 0;

  protected:
    IQFFrame::audioInfo mSource;
    IQFFrame::audioInfo mDestination;
    bool mActive = false;
    EventCallback mEventCallback;
};

}  // namespace Vorlin
