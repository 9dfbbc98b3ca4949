// The `sonivex` program runs the filter on files. Each subcommand does one thing; docs/command-line.md
// describes them.

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <sstream>
#include <string>

#include "command_line.h"
#include "console.h"
#include "failure.h"
#include "hasty_end.h"
#include "last_words.h"
#include "result_stream.h"
#include "usage_error.h"

namespace {

using sonivex_tool::ExitCode;

int exitWith(ExitCode code) {
    return static_cast<int>(code);
}

// Opens /dev/null on every standard descriptor that is closed, and returns whether all three are open then.
// Otherwise the next file to be opened would take the descriptor's number and receive what the program or an
// effect prints. The access mode is the wrong one on purpose: using the descriptor still fails, as it does on
// a closed one.
bool occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0) continue;
        const int wrong_way = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (open("/dev/null", wrong_way) != descriptor) return false;
    }
    return true;
}

int parseAndRun(int argc, char** argv) {
    const sonivex_tool::CommandLine command_line = sonivex_tool::defineCommandLine();
    CLI::App& program = *command_line.program;
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& request) {
        std::ostringstream text;  // help or version
        program.exit(request, text, text);
        sonivex_tool::writeToStandard(STDOUT_FILENO, "output", text.str());
        return exitWith(ExitCode::Success);
    } catch (const CLI::ParseError& error) {
        sonivex_tool::printError(sonivex_tool::explainUsageError(program, error));
        return exitWith(ExitCode::Usage);
    }
    command_line.commands.at(program.get_subcommands().front()->get_name())();
    return exitWith(ExitCode::Success);
}

int runProgram(int argc, char** argv) {
    try {
        return parseAndRun(argc, argv);
    } catch (const sonivex_tool::Failure& failure) {
        sonivex_tool::printError(failure.what());
        return exitWith(failure.exitCode());
    } catch (const std::bad_alloc&) {
        sonivex_tool::printOutOfMemory();
    } catch (const std::exception& error) {
        sonivex_tool::printError(std::string("internal error: ") + error.what());
    }
    return exitWith(ExitCode::Internal);
}

}  // namespace

int main(int argc, char** argv) {
    sonivex_tool::explainLackOfMemoryAtTheEnd();
    if (!occupyStandardDescriptors()) return exitWith(ExitCode::Internal);
    return sonivex_tool::endProgram(runProgram(argc, argv));
}
