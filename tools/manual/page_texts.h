// The parts of the manual pages that no option tells: examples, files, the environment.
#pragma once

#include <string>
#include <vector>

namespace sonivex_manual {

/** A command line and what it does. */
struct Example {
    std::string command;
    std::string purpose;  // a sentence
};

/** Examples of a command; tests run them. Empty for an unknown command. */
std::vector<Example> examplesOf(const std::string& command);

/** A path or a variable, and what it is for. */
struct Place {
    std::string name;
    std::string purpose;
};

/** The files that the program reads besides those on the command line. */
std::vector<Place> files();
/** The environment variables that the program heeds. */
std::vector<Place> variables();

}  // namespace sonivex_manual
