// The command line: sonivex-irgen [--sofa FILE] --out FILE [--report]
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace sonivex_irgen {

enum ExitCode {
    kDone = 0,
    kUsage = 2,
    kUnusableSofa = 3,
    kUnwritableOutput = 4,
    kUnmetFact = 5,
};

/** Make the tables.
 *  @param arguments   without the program's name
 *  @param default_sofa the file to use without --sofa; empty if there is none
 *  @param out         the report; @param err one line for a failure
 *  @return an ExitCode */
int runCommand(const std::vector<std::string>& arguments, const std::string& default_sofa, std::ostream& out,
               std::ostream& err);

}  // namespace sonivex_irgen
