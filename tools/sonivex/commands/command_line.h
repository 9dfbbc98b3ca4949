// The whole command line of the program: every command with its options. main() parses it, and the generator
// of the manual pages and of the completions walks through it.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace sonivex_tool {

/** The program's parser, and what each command does. */
struct CommandLine {
    /** Holds every command and option. Creating it parses nothing, prints nothing and opens no file. */
    std::unique_ptr<CLI::App> program;
    /** The function that runs a command once `program` has parsed its options, by the command's name. It
     *  refers to `program`, and throws Failure. */
    std::map<std::string, std::function<void()>> commands;
};

/** Defines all commands and their options. */
CommandLine defineCommandLine();

}  // namespace sonivex_tool
