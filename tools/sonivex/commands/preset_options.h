// Options of `render` in the files of presets, as lines "option = value".
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Returns the options that a preset may have, without their dashes: those that shape the sound and OUT. */
std::vector<std::string> presetOptionNames();

/** Gives each option of a preset to the parser unless the command line has it already. Options of effects
 *  that a typed `--effect` leaves out of the chain are dropped, and so is a mode if the typed `--type` has
 *  none.
 *
 *  @param command the parser of `render` after it has parsed the command line
 *  @param text the preset
 *  @param file its name for messages
 *  @throw Failure (Usage) that names the line's option if it is unknown, not for presets, given twice, or
 *         does not accept its value */
void applyPreset(CLI::App& command, const std::string& text, const std::string& file);

/** Returns a preset of the options that the command line and its preset have set.
 *
 *  @throw Failure (Usage) for a value that a preset cannot hold: one with anything but letters, digits and
 *         the characters _-+.,:/() */
std::string presetOf(const CLI::App& command);

}  // namespace sonivex_tool
