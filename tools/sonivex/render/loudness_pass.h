#pragma once

#include <memory>
#include <optional>

#include "console.h"
#include "level_plan.h"
#include "loudness.h"
#include "render_settings.h"
#include "vorlin/plugin.h"

namespace sonivex_tool {

/** Plans the level that brings the output of the effects to the target loudness of the settings.
 *
 *  The gain is known only when the whole file has been measured, so the file runs through the effects once
 *  without being written. If the limiter is needed, trials follow, up to kMostTrials, until the true peak
 *  stays below the ceiling. The effects are much faster than real time, and their output would need as much
 *  room as a WAV file.
 *  @param spec rate and layout of the output
 *  @return nothing if the settings have no target
 *  @throw Failure (Usage) if the input cannot be read more than once; Failure, std::bad_alloc */
std::optional<LevelPlan> fittedLevel(const AudioSpec& spec, const RenderSettings& settings,
                                     const std::shared_ptr<Vorlin::Plugin>& plugin, Console& console);

}  // namespace sonivex_tool
