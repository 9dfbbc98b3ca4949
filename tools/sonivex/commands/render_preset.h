// Presets of `render`: reading, listing and saving them.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "render_choices.h"

namespace sonivex_tool {

/** Applies the preset that `choices` names, if any, to the options that the command line leaves open.
 *  @throw Failure (Usage) */
void usePreset(CLI::App& command, const RenderChoices& choices);

/** Saves the options of the command line and of its preset as the preset that `choices` names, and says
 *  where.
 *  @throw Failure; OutputExists if the file exists and may not be replaced */
void savePreset(const CLI::App& command, const RenderChoices& choices);

/** Returns a line for each preset: its name, its title and its file. */
std::string presetList();

}  // namespace sonivex_tool
