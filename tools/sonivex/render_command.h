#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

namespace sonivex_tool {

/** Adds the subcommand `render` to the program.
 * @return a function that runs the command once the command line is parsed; it throws Failure */
std::function<void()> addRenderCommand(CLI::App& program);

}  // namespace sonivex_tool
