#pragma once

#include <string>

#include "vorlin/filter.h"

namespace Vorlin {

/** Why a filter is bypassed. It is set invalid exactly while at least one reason holds:
 *    listener   the listener switched it off
 *    overFps    the video's frame rate at the current speed is too high for it
 *    overload   it took too long, and nobody asked to try again
 *
 *  The last two are the filter's own findings, which it announces by events, but only while it is valid. What
 *  it found while it was invalid is asked when it may become valid again. */
class BypassControl {
  public:
    /** Installs the event callback. `filter` outlives this object, or is never called again after it. */
    explicit BypassControl(IAudioFilter& filter);
    BypassControl(const BypassControl&) = delete;
    BypassControl& operator=(const BypassControl&) = delete;

    /** Set the filter invalid or valid, as the reasons say. */
    void apply();

    bool isBypassed() const { return mListener || mOverFps || mOverload; }

    void setListener(bool bypass);
    void retryAfterOverload();

    /** Report a number that decides about overFps (frame rate or speed) and obey what the filter answers.
     *  @return false when the filter refused the number as malformed or out of range. */
    bool reportRate(const std::string& key, double value);

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
