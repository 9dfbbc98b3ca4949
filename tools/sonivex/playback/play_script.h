#pragma once

#include <string>
#include <vector>

#include "play_action.h"

namespace sonivex_tool {

/** A key that is pressed at a certain time. */
struct ScriptedKey {
    double time_s = 0.0;  // of what has been played so far, pauses included
    PlayAction action = PlayAction::Quit;
};

/** Parses keys with their times, as in "2.5 e; 4 right; 6 q". The times must not fall.
 *  @throw Failure (Usage) that names what cannot be read */
std::vector<ScriptedKey> parseScript(const std::string& text);

}  // namespace sonivex_tool
