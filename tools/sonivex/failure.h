#pragma once

#include <stdexcept>
#include <string>

#include "exit_codes.h"

namespace sonivex_tool {

/** Ends a command: one line for the user and the program's exit code. `main` prints it. */
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode exit_code, const std::string& line) : std::runtime_error(line), exit_code_(exit_code) {}

    ExitCode exitCode() const { return exit_code_; }

  private:
    ExitCode exit_code_;
};

}  // namespace sonivex_tool
