#pragma once

#include <memory>
#include <string>

#include "vorlin/plugin.h"

namespace sonivex_tool {

/** The name that the filter answers to in the player's registry. */
constexpr char kFilterName[] = "sonivex";

/** Load the filter's library.
 *  @param path what the user asked for; empty: beside this program, in ../lib from there, then wherever the
 * system's loader looks.
 *  @throw Failure (PluginNotFound) */
std::shared_ptr<Vorlin::Plugin> loadPlugin(const std::string& path);

}  // namespace sonivex_tool
