// Completions of the command line for three shells. Each is a whole file, to be put where the shell looks.
#pragma once

#include <string>

#include "command_facts.h"

namespace sonivex_manual {

/** For bash 4 and later; needs no other package. */
std::string bashCompletion(const ProgramFacts& facts);
/** For zsh, as the autoloaded function _sonivex. */
std::string zshCompletion(const ProgramFacts& facts);
/** For fish 3 and later. */
std::string fishCompletion(const ProgramFacts& facts);

}  // namespace sonivex_manual
