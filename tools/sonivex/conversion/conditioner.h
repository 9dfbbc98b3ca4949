#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "conversion_plan.h"
#include "format_converter.h"

namespace sonivex_tool {

/** Counts what conversion found in the audio. Samples count once for each channel. */
struct ConditionerCounts {
    uint64_t samples = 0;           // converted, at the effects' rate and in their channels
    uint64_t above_full_scale = 0;  // of those: clipped by the conversion to 16 bits
    uint64_t not_finite = 0;        // NaN or infinite samples of the input, replaced by silence
};

/** Describes the counts for the user, one line for each kind that occurred. */
std::vector<std::string> notesOn(const ConditionerCounts& counts);

/** Converts audio of one AudioSpec to the one in which the effects get it.
 *
 *    Conditioner conditioner(plan, dither);
 *    for each frame:  push(conditioner.convert(conditioner.repair(frame)));
 *    push(conditioner.flush());
 *
 *  Between the two steps the samples may be measured: they are finite and otherwise those of the input. The
 *  members throw Failure (Internal) and std::bad_alloc. */
class Conditioner {
  public:
    Conditioner(const ConversionPlan& plan, bool dither);

    /** Replaces samples that are not finite by silence, before a filter smears them. */
    FramePtr repair(FramePtr frame);
    /** Converts a repaired frame.
     *  @return null while the resampler holds all of it */
    FramePtr convert(FramePtr frame);
    /** Returns the samples that the resampler still holds, or null. */
    FramePtr flush();

    /** Returns the counts so far. */
    ConditionerCounts counts() const;

  private:
    FramePtr placed(FramePtr frame);

    FormatConverter converter_;
    ConversionPlan plan_;
    uint64_t samples_ = 0;
    uint64_t not_finite_ = 0;
};

}  // namespace sonivex_tool
