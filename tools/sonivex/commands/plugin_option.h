// The option of all commands that run the filter: where its library lies.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace sonivex_tool {

/** Adds the option "--plugin" to a command, and returns it.
 *  @param plugin takes the name of the file; it stays empty without the option */
CLI::Option* addPluginOption(CLI::App& command, std::string& plugin);

}  // namespace sonivex_tool
