#pragma once

#include <stdexcept>
#include <string>

#include "exit_codes.h"

namespace sonivex_tool {

/** Ends a command: one line for the user and the program's exit code. `main` prints it. */
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode exitCode, const std::string& line) : std::runtime_error(line), mExitCode(exitCode) {}

    ExitCode exitCode() const { return mExitCode; }

  private:
    ExitCode mExitCode;
};

}  // namespace sonivex_tool
