// The settings of an effect, as the host's controls ask for them.
#pragma once

#include "plugin_kinds.h"

namespace sonivex_lv2 {

/** Settings with which an effect is made; a change needs a new engine. They keep their defaults in plug-ins
 *  without these controls. */
struct Settings {
    int type = 1;     // 1 or 13
    int mode = 1;     // 1..3; always 1 for type 1, which ignores it
    int limiter = 1;  // 0 or 1

    bool operator==(const Settings&) const = default;
};

/** Reads the controls of surround. A value out of range counts as the nearest that is allowed. A control that
 *  is not connected or not a number counts as its default. Without these controls the result is the default.
 *  [any] real-time safe */
Settings readSettings(const PluginKind& kind, const Ports& ports);

/** Reads the voice level, 1..10 with the default 1, by the same rule. [any] real-time safe */
double readVoiceLevel(const Ports& ports);

/** Returns whether the host asks for the unprocessed sound: bypass is above 0. A control that is not
 *  connected or not a number does not. [any] real-time safe */
bool readBypass(const Ports& ports);

}  // namespace sonivex_lv2
