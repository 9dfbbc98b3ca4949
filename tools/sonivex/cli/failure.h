#pragma once

#include <stdexcept>
#include <string>

#include "exit_codes.h"

namespace sonivex_tool {

/** Thrown to end a command. Carries a line for the user, which `main` prints, and the program's exit code. */
class Failure : public std::runtime_error {
  public:
    /** @param line a message of one line, without prefix or newline */
    Failure(ExitCode exit_code, const std::string& line) : std::runtime_error(line), exit_code_(exit_code) {}

    /** The exit code that the program ends with. */
    ExitCode exitCode() const { return exit_code_; }

  private:
    ExitCode exit_code_;
};

}  // namespace sonivex_tool
