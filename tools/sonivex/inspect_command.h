#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace sonivex_tool {

/** Add `inspect` to the program. @return what runs it, once the command line is parsed; it throws Failure. */
std::function<void()> addInspectCommand(CLI::App& program);

}  // namespace sonivex_tool
