#include "inspect_command.h"

extern "C" {
#include <libavutil/log.h>
}

#include <memory>
#include <string>
#include <vector>

#include "failure.h"
#include "inspect.h"
#include "inspect_report.h"
#include "interrupt.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

constexpr char kInspectFooter[] =
    "Files named *.pcm are bare interleaved 16-bit samples, as the filter dumps them; they do not say\n"
    "their channels and rate. Two files of one dump session (sonivex_EFFECT_input_ID.pcm and\n"
    "sonivex_EFFECT_output_ID.pcm) are compared with each other.\n"
    "Exit codes are those of `sonivex render`.\n";
constexpr int kLowestRate_hz = 4000;
constexpr int kHighestRate_hz = 768000;

struct InspectChoices {
    InspectRequest request;
    std::vector<std::string> pair;
    std::string channels;
    bool json = false;
};

void run(InspectChoices& choices) {
    if (choices.request.files.empty() && choices.pair.empty())
        throw Failure(ExitCode::Usage, "no FILE to inspect (sonivex inspect --help explains)");
    if (!choices.pair.empty()) choices.request.pair = {choices.pair.at(0), choices.pair.at(1)};
    choices.request.hints.channels = parseChannels(choices.channels);
    installSignalHandlers();
    av_log_set_level(AV_LOG_QUIET);
    ResultStream result(ResultStream::Prints::ToStandardError);
    const InspectReport report = inspect(choices.request);
    result.write(choices.json ? asJson(report) : asText(report));
}

}  // namespace

std::function<void()> addInspectCommand(CLI::App& program) {
    auto choices = std::make_shared<InspectChoices>();
    CLI::App* command = program.add_subcommand(
        "inspect", "Measure the levels of files, and what an effect did between two of them");
    command->footer(kInspectFooter);
    command->add_option("FILE", choices->request.files, "Audio files or dump files")->option_text(" ");
    command
        ->add_option("--pair", choices->pair,
                     "Compare OUT with IN: how late it is, and how much louder;\nwhatever their names")
        ->option_text("IN OUT")
        ->expected(2);
    command
        ->add_option("--channels", choices->channels,
                     "Channels of .pcm files, 1 to 8; two numbers (6,2) when an\neffect's output has others")
        ->option_text("N[,M]")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return parseChannels(text).empty() ? "must be N or N,M, each 1 to 8: " + text : std::string();
            },
            "", "channels"));
    command->add_option("--rate", choices->request.hints.rate_hz, "Sample rate of .pcm files (default 48000)")
        ->option_text("HZ")
        ->check(CLI::Range(kLowestRate_hz, kHighestRate_hz));
    command->add_flag("--json", choices->json, "Print everything as one JSON object");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
