#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "format_converter.h"
#include "level_plan.h"
#include "true_peak_limiter.h"

namespace sonivex_tool {

/** Applies a plain gain and, if the plan asks for it, the limiter.
 *
 *    LevelStage stage(spec, plan, output);
 *    for each frame:  stage.push(frame);
 *    stage.finish();
 *
 *  The output is aligned with the input and as long. The members throw what FormatConverter and
 *  TruePeakLimiter throw, and whatever the output throws. */
class LevelStage {
  public:
    /** Receives frames of `spec`'s rate and layout, in interleaved doubles. */
    using Output = std::function<void(FramePtr)>;

    /** @param spec rate and layout of the output. A limiter belongs behind any change of them, since a
     *  resampler or a mix moves peaks. */
    LevelStage(const AudioSpec& spec, const LevelPlan& plan, Output output);

    /** Appends a frame of any spec. */
    void push(FramePtr frame);
    /** Lets out the rest. */
    void finish();

  private:
    void apply(FramePtr frame);
    void deliver(std::vector<FramePtr> limited);

    double gain_lin_;   // to full scale at the limiter, if there is one
    double limit_lin_;  // after the limiter; 1 without one
    FormatConverter to_double_;
    std::optional<TruePeakLimiter> limiter_;
    Output output_;
};

}  // namespace sonivex_tool
