#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace sonivex_tool {

/** Explains why the command line could not be parsed: names the word that is wrong and the one that was most
 *  likely meant, if there is one, and ends with the help to read.
 *
 *  @param program the parser after its `parse` threw `error`
 *  @return one line without prefix or newline */
std::string explainUsageError(const CLI::App& program, const CLI::ParseError& error);

}  // namespace sonivex_tool
