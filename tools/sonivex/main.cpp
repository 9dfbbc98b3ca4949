// sonivex: the filter from the command line. One subcommand does one thing; see docs/command-line.md.

#include <exception>
#include <new>

#include "console.h"
#include "failure.h"
#include "render_command.h"

namespace {

using sonivex_tool::ExitCode;

int exitWith(ExitCode code) {
    return static_cast<int>(code);
}

int parseAndRun(int argc, char** argv) {
    CLI::App program("Audio post-processing for media players, from the command line", "sonivex");
    program.set_version_flag("--version", "sonivex " SONIVEX_VERSION);
    program.require_subcommand(1);
    const auto render = sonivex_tool::addRenderCommand(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& request) {
        program.exit(request);  // prints help or version
        return exitWith(ExitCode::Success);
    } catch (const CLI::ParseError& error) {
        sonivex_tool::printError(std::string(error.what()) + " (sonivex render --help explains)");
        return exitWith(ExitCode::Usage);
    }
    render();
    return exitWith(ExitCode::Success);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return parseAndRun(argc, argv);
    } catch (const sonivex_tool::Failure& failure) {
        sonivex_tool::printError(failure.what());
        return exitWith(failure.exitCode());
    } catch (const std::bad_alloc&) {
        sonivex_tool::printError("out of memory");
    } catch (const std::exception& error) {
        sonivex_tool::printError(std::string("internal error: ") + error.what());
    }
    return exitWith(ExitCode::Internal);
}
