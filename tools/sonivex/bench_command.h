#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace sonivex_tool {

/** Add `bench` to the program. @return what to call when it was chosen; it throws `Failure`. */
std::function<void()> addBenchCommand(CLI::App& program);

}  // namespace sonivex_tool
