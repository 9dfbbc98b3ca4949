// Manual pages in the macros of man(7).
#pragma once

#include <string>

#include "command_facts.h"

namespace sonivex_manual {

/** The name, date and version that every page shows. */
struct PageHeader {
    std::string date;  // year-month-day
    std::string version;
};

/** Writes the page of the program, sonivex(1), which lists the commands. */
std::string programPage(const ProgramFacts& facts, const PageHeader& header);

/** Writes the page of a command, such as sonivex-render(1). */
std::string commandPage(const CommandFacts& command, const PageHeader& header);

}  // namespace sonivex_manual
