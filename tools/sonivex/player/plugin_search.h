#pragma once

#include <memory>
#include <string>

#include "vorlin/plugin.h"

namespace sonivex_tool {

/** The name under which the filter is registered with the player. */
constexpr char kFilterName[] = "sonivex";

/** Returns the path of the library that `loadPlugin(path)` loads, or its bare name if only the system's
 *  loader knows where it is. */
std::string findPluginFile(const std::string& path);

/** Loads the filter's library.
 *  @param path the library that the user named. Empty: the first of libSonivexFilter.so beside this program,
 *  in ../lib from there, and on the search path of the system's loader.
 *  @throw Failure (PluginNotFound) if it cannot be loaded or registers no filter named kFilterName */
std::shared_ptr<Vorlin::Plugin> loadPlugin(const std::string& path);

}  // namespace sonivex_tool
