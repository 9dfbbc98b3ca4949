#pragma once

#include <optional>
#include <string>

#include "level_settings.h"
#include "loudness.h"

namespace sonivex_tool {

/** The gain that leads to a target loudness. */
struct LevelPlan {
    double gain_db = 0.0;
    double ceiling_dbtp = 0.0;  // of the true peak
    double limit_dbtp = 0.0;    // at which the limiter works; the true peak may exceed it a little
    bool limits = false;        // true if the gain alone would lift the true peak above the ceiling
    std::optional<std::string> note = {};  // for the user
};

/** Trials in which a limit comes down to where the ceiling holds. Each one leaves a small part of the excess,
 *  since the limiter acts a little differently at each limit. */
constexpr int kMostTrials = 3;

/** Plans the gain from what was measured before it. Silence and sound too quiet to measure keep their level;
 *  a note says so.
 *  @param before with the true peak; without it the limiter is used
 *  @param settings with a target */
LevelPlan planLevel(const Loudness& before, const LevelSettings& settings);

/** Lowers the limiter if a trial with the plan has exceeded the ceiling: by the excess, and a little more for
 *  the rounding to 16 bits. The excess is the same in every run over the same sound.
 *  @param trial measured after the gain and the limiter, with the true peak
 *  @return true if the plan has changed */
bool lowerLimit(LevelPlan& plan, const Loudness& trial);

/** Says, for the user, if the limiter has kept the output more than 0.5 LU below the target.
 *  @param after measured after the gain and the limiter */
std::optional<std::string> levelNote(const LevelPlan& plan, const LevelSettings& settings,
                                     const Loudness& after);

}  // namespace sonivex_tool
