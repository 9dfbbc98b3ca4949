#pragma once

// Results of a filter's calls that a player knows by number. They are the same on every system: kTryAgain is
// a filter's own number, not the system's EAGAIN. Any other negative result is an AVERROR of libavutil.

namespace Vorlin {

/** The call did its work. A frame that was pushed now belongs to the filter; a frame that was pulled now
 *  belongs to the caller. */
inline constexpr int kSuccess = 0;

/** The call did nothing, and the frame variable is as it was. `push`: the filter has no room; pull, then push
 *  the same frame again. `pull`: no frame is ready. */
inline constexpr int kTryAgain = -35;

/** The filter gave a frame up, because an effect failed or memory ran out. A filter's loop returns this;
 *  `push` and `pull` do not. The lost frame does not come out of `pull`. */
inline constexpr int kFrameLost = -1;

}  // namespace Vorlin
