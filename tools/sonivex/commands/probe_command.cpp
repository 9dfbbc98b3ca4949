#include "commands.h"

extern "C" {
#include <libavutil/log.h>
}

#include <memory>
#include <string>

#include "descriptor_input.h"
#include "failure.h"
#include "interrupt.h"
#include "probe.h"
#include "probe_report.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

constexpr char kProbeFooter[] =
    "An effect gets a stream \"as it is\" or \"converted\"; `render` converts by itself, unless --strict is "
    "given.\n"
    "The exit codes are those of `sonivex render`.\n";

struct ProbeChoices {
    std::string path;
    bool json = false;
};

void run(const ProbeChoices& choices) {
    if (isStandardInput(choices.path)) {
        throw Failure(ExitCode::Usage,
                      "probe opens the file once for each audio stream, so it cannot be standard input");
    }
    installSignalHandlers();
    av_log_set_level(AV_LOG_QUIET);
    ResultStream result(ResultStream::Prints::ToStandardError);
    const Probe probe = probeFile(choices.path);
    result.write(choices.json ? asJson(probe) : asText(probe));
}

}  // namespace

std::function<void()> addProbeCommand(CLI::App& program) {
    auto choices = std::make_shared<ProbeChoices>();
    CLI::App* command = program.add_subcommand("probe", "Show what is in a file and which effects take it");
    command->footer(kProbeFooter);
    command->add_option("FILE", choices->path, "The file to look into")->option_text(" ")->required();
    command->add_flag("--json", choices->json, "Print everything as one JSON object");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
