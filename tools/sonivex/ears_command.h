#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace sonivex_tool {

/** Adds the subcommand `ears` to the program.
 * @return a function that runs the command once the command line is parsed; it throws Failure */
std::function<void()> addEarsCommand(CLI::App& program);

}  // namespace sonivex_tool
