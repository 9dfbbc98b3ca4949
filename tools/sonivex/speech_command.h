#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace sonivex_tool {

/** Add `speech` to the program. @return what runs it, once the command line is parsed; it throws Failure. */
std::function<void()> addSpeechCommand(CLI::App& program);

}  // namespace sonivex_tool
