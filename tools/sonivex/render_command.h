#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

namespace sonivex_tool {

/** Add `render` to the program. @return what runs it, once the command line is parsed; it throws Failure. */
std::function<void()> addRenderCommand(CLI::App& program);

}  // namespace sonivex_tool
