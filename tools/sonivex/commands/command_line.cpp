#include "command_line.h"

#include "commands.h"

namespace sonivex_tool {

CommandLine defineCommandLine() {
    auto program = std::make_unique<CLI::App>(
        "Run the audio effects of the Sonivex filter on files, and measure the results", "sonivex");
    program->set_version_flag("--version", "sonivex " SONIVEX_VERSION);
    program->require_subcommand(1);
    const std::map<std::string, std::function<void()>> commands = {
        {"render", addRenderCommand(*program)},       {"ears", addEarsCommand(*program)},
        {"inspect", addInspectCommand(*program)},     {"play", addPlayCommand(*program)},
        {"probe", addProbeCommand(*program)},         {"report", addReportCommand(*program)},
        {"responses", addResponsesCommand(*program)}, {"speech", addSpeechCommand(*program)},
        {"bench", addBenchCommand(*program)},
    };
    return {.program = std::move(program), .commands = commands};
}

}  // namespace sonivex_tool
