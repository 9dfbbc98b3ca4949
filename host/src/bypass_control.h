#pragma once

#include <string>

#include "vorlin/filter.h"

namespace Vorlin {

/** Keeps the reasons for which a filter is bypassed. The filter is set invalid exactly while at least one
 *  reason holds:
 *    listener   the listener switched the filter off
 *    overFps    the video's frame rate at the current speed is too high for the filter
 *    overload   the filter took too long, and nobody has asked to try again
 *
 *  The filter announces the last two by events, but only while it is valid. When it may become valid again,
 *  this class asks it whether the frame rate is too high.
 *
 *  Only the player's thread uses this class. */
class BypassControl {
  public:
    /** Installs the event callback. After the end of this object `filter` must not be called, because its
     *  callback refers to this object. */
    explicit BypassControl(IAudioFilter& filter);
    BypassControl(const BypassControl&) = delete;
    BypassControl& operator=(const BypassControl&) = delete;

    /** Sets the filter invalid if a reason holds, else valid. */
    void apply();

    /** @return true if a reason holds. */
    bool isBypassed() const { return mListener || mOverFps || mOverload; }

    /** Sets or ends the reason `listener`. */
    void setListener(bool bypass);
    /** Ends the reason `overload`. */
    void retryAfterOverload();

    /** Tells whether the filter took a reported number. */
    enum class RateAnswer {
        Taken,
        Refused,   // malformed or out of range for the filter
        NoMemory,  // the filter may not know it; it must be reported again
    };

    /** Reports a number on which overFps depends, and obeys the events that follow.
     *  @param key VIDEO_FPS_OPTION or PLAYER_SPEED_OPTION. */
    RateAnswer reportRate(const std::string& key, double value);

  private:
    void obey(const std::string& event);
    void endReason(bool& reason);

    IAudioFilter& mFilter;
    const std::string mEventPrefix;
    bool mListener = false;
    bool mOverFps = false;
    bool mOverload = false;
};

}  // namespace Vorlin
