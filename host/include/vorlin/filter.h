#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/frame.h"

namespace Vorlin {

/** What every filter of the player offers, in the order of its virtual table. All calls come from one thread,
 *  the player's. */
class VORLIN_API IFilter {
  public:
    IFilter() = default;
    IFilter(const IFilter&) = delete;
    IFilter& operator=(const IFilter&) = delete;
    virtual ~IFilter();

    /** Set an option. @return false when the filter understood the key but not the value. */
    virtual bool setOption(const std::string& key, const std::string& value, const std::string& extra) = 0;
    /** Make the filter ready; an active filter starts its worker here. @return success. */
    virtual bool init(uint64_t flags) = 0;
    /** Hand a frame in. @return 0 with the frame taken, or -35 with the frame left to the caller: pull, then
     *  try again. `timeOut` is in milliseconds; a filter may ignore it. */
    virtual int push(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) = 0;
    /** Take the oldest finished frame. @return 0 with `frame` replaced, or -35 with it untouched: none is
     *  ready. */
    virtual int pull(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) = 0;
    /** Forget every frame and all history, as after a seek. */
    virtual void flush() = 0;
    virtual std::string getName() = 0;
};

/** An audio filter: IFilter, and what a player needs to find, copy, bypass and watch one. */
class VORLIN_API IAudioFilter : public IFilter {
  public:
    using EventCallback = std::function<void(int code, const std::string& event)>;

    /** A prototype: inactive, nothing known of the stream. */
    IAudioFilter() = default;
    /** @param src, dst what comes in and what is wanted out. @param active whether `init` starts a worker
     *  thread; an inactive filter works inside `push`. */
    IAudioFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active);
    ~IAudioFilter() override;

    /** Whether the filter answers to `name`; the integers are codec hints that a filter may ignore. */
    virtual bool is_supported(const std::string& name, int codec, int profile, int level) = 0;
    /** A new working filter, owned by the caller. */
    virtual IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) = 0;
    /** True: every frame passes through untouched until false. */
    virtual void setInvalid(bool invalid) = 0;
    /** False unless a filter says otherwise: a filter may keep its flag to itself, so a player keeps its own
     *  record of what it set. */
    virtual bool isInvalid();
    /** Install the callback for events "<filter name>:<event>". It runs on the player's thread, inside
     *  `setOption` or `checkTimeConsume`, and must not call `setOption` of the same filter. */
    virtual void setDCA(const EventCallback& callback);
    /** Tell the filter what is being played. */
    virtual void setCurrentTarget(const std::string& target) = 0;
    /** Whether the frame rate at the current speed is too high for the filter; may send an event. */
    virtual bool isOverFps() = 0;
    /** Report the time that the filter worked on one frame, in milliseconds; may send an event. */
    virtual void checkTimeConsume(uint64_t elapsed) = 0;

  protected:
    IQFFrame::audioInfo mSource;
    IQFFrame::audioInfo mDestination;
    bool mActive = false;
    EventCallback mEventCallback;
};

}  // namespace Vorlin
