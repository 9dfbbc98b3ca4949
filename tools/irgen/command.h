// The command line: sonivex-irgen [--sofa FILE] --out FILE [--report]
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace sonivex_irgen {

/** Exit codes of the program. */
enum ExitCode {
    kDone = 0,
    kUsage = 2,             // unknown, incomplete or missing arguments
    kUnusableSofa = 3,      // the SOFA file cannot be used, or memory ran out
    kUnwritableOutput = 4,  // the output file cannot be written; the old one is untouched
    kUnmetFact = 5,         // a table breaks a fact that the effect relies on
};

/** Makes the tables and writes them to the file that --out names.
 *  @param arguments    command-line arguments without the program's name
 *  @param default_sofa SOFA file to use without --sofa; empty if there is none
 *  @param out          receives the report if --report is given
 *  @param err          receives one line after a failure
 *  @return an ExitCode */
int runCommand(const std::vector<std::string>& arguments, const std::string& default_sofa, std::ostream& out,
               std::ostream& err);

}  // namespace sonivex_irgen
