#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "loudness_match.h"

namespace sonivex_tool {

/** The state of what is played, at the position that was rendered last. */
struct PlayStatus {
    double position_s = 0.0;
    bool is_paused = false;
    bool hears_effect = true;  // false: the original
    std::string effect;
    bool is_matching = true;
    MatchReading reading;  // at the position; the gains are 0 without matching
    std::optional<double> output_peak_dbfs;
    double volume_db = 0.0;
    double cpu_share = 0.0;
    std::string guard;
    uint64_t clipped_samples = 0;
};

/** Something that happened, for the user. */
struct PlayEvent {
    double position_s = 0.0;
    std::string text;
};

}  // namespace sonivex_tool
