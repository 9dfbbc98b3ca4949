// Engines: the effects of libsonivex, owned.
#pragma once

#include <memory>

#include "plugin_kinds.h"
#include "settings.h"
#include "sonivex/effect.h"

namespace sonivex_lv2 {

struct EngineRelease {
    void operator()(SonivexEffect* engine) const { sonivex_release(engine); }
};
using Engine = std::unique_ptr<SonivexEffect, EngineRelease>;

/** Makes an engine for a plug-in.
 *  @param engine receives it; null after an error.
 *  @return a SonivexStatus.
 *  [any, concurrent] not real-time safe: allocates */
int makeEngine(const PluginKind& kind, int sample_rate_hz, const Settings& settings, Engine& engine);

}  // namespace sonivex_lv2
