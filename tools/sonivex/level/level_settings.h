#pragma once

#include <optional>

namespace sonivex_tool {

/** Sets the level after the effects, and whether loudness is measured. */
struct LevelSettings {
    std::optional<double> target_lufs = {};  // integrated loudness of the output; none: the level stays
    double true_peak_dbtp = -1.0;            // ceiling of the limiter, only with a target
    bool measure = true;                     // loudness and peaks of input and output
};

}  // namespace sonivex_tool
