#pragma once

#include <memory>

#include "console.h"
#include "level_plan.h"
#include "loudness.h"
#include "render_settings.h"
#include "vorlin/plugin.h"

namespace sonivex_tool {

/** Runs a file through the effects without writing anything, and measures what comes out of them.
 *
 *  A gain that leads to a target loudness is known only when the whole file has been measured, so a render
 *  with a target runs the effects twice. They are much faster than real time, and their output would need as
 *  much room as a WAV file.
 *  @throw Failure, std::bad_alloc */
Loudness measureEffects(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console);

/** Lowers the limiter of a plan until its true peak stays below the ceiling. It runs the file through the
 *  effects and the plan's level, up to kMostTrials times, without writing anything. A plan without a limiter
 *  needs no run.
 *  @param spec rate and layout of the output
 *  @throw Failure, std::bad_alloc */
void fitLimiter(LevelPlan& plan, const AudioSpec& spec, const RenderSettings& settings,
                const std::shared_ptr<Vorlin::Plugin>& plugin, Console& console);

}  // namespace sonivex_tool
