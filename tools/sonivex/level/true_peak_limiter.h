#pragma once

#include <vector>

#include "format_converter.h"
#include "sample_limiter.h"

namespace sonivex_tool {

// Holds the true peak, that of the curve through the samples, near full scale, with the limiter of
// libavfilter:
//
//   4 x the rate -> limit the samples -> back to the rate
//
// On the way back, the resampler removes what the limiter has put above half the rate, and the peaks may rise
// again: the more, the denser they are. In white noise on eight channels it was 3.4 dB. Who needs a ceiling
// measures the output and lowers the limit by the excess (see lowerLimit).

/** Limits the true peak of frames of interleaved doubles. The output is aligned with the input and as long.
 *
 *  The members throw what SampleLimiter and FormatConverter throw. */
class TruePeakLimiter {
  public:
    /** @param spec of every frame; interleaved doubles with named loudspeakers */
    explicit TruePeakLimiter(const AudioSpec& spec);

    /** Limits the next frame. @return the frames that are ready */
    std::vector<FramePtr> limit(FramePtr frame);
    /** Ends the input. @return the rest */
    std::vector<FramePtr> finish();

  private:
    std::vector<FramePtr> lowered(std::vector<FramePtr> upper);

    FormatConverter up_;
    SampleLimiter limiter_;
    FormatConverter down_;
};

}  // namespace sonivex_tool
