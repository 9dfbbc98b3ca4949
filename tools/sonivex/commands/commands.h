// The commands of the program. Each function adds one subcommand and returns the function that runs it once
// the command line is parsed; that function throws Failure.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace sonivex_tool {

/** Adds `bench`. */
std::function<void()> addBenchCommand(CLI::App& program);
/** Adds `ears`. */
std::function<void()> addEarsCommand(CLI::App& program);
/** Adds `inspect`. */
std::function<void()> addInspectCommand(CLI::App& program);
/** Adds `play`. */
std::function<void()> addPlayCommand(CLI::App& program);
/** Adds `probe`. */
std::function<void()> addProbeCommand(CLI::App& program);
/** Adds `render`. */
std::function<void()> addRenderCommand(CLI::App& program);
/** Adds `report`. */
std::function<void()> addReportCommand(CLI::App& program);
/** Adds `responses`. */
std::function<void()> addResponsesCommand(CLI::App& program);
/** Adds `speech`. */
std::function<void()> addSpeechCommand(CLI::App& program);

}  // namespace sonivex_tool
