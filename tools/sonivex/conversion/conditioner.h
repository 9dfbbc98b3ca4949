#pragma once

#include <cstdint>

#include "conversion_plan.h"
#include "format_converter.h"

namespace sonivex_tool {

/** What conversion found in the audio. Samples count once for each channel. */
struct ConditionerCounts {
    uint64_t samples = 0;
    uint64_t above_full_scale = 0;  // finite samples above full scale, which conversion to 16 bits clips
    uint64_t not_finite = 0;        // NaN or infinite samples, replaced by silence
};

/** Converts audio of one spec to the spec in which the effects get it.
 *
 *  The members throw Failure (Internal) and std::bad_alloc. */
class Conditioner {
  public:
    Conditioner(const AudioSpec& input, const ConversionPlan& plan, bool dither);

    /** Converts a frame, which must have the input's spec.
     *  @return null while the resampler holds all of it */
    FramePtr convert(FramePtr frame);
    /** Returns the samples that the resampler still holds, or null. */
    FramePtr flush();

    /** Returns the counts so far. */
    const ConditionerCounts& counts() const { return counts_; }

  private:
    FormatConverter converter_;
    ConditionerCounts counts_;
};

}  // namespace sonivex_tool
