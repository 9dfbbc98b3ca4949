#include "commands.h"

extern "C" {
#include <libavutil/log.h>
}

#include <memory>
#include <string>
#include <vector>

#include "damaged_inputs.h"
#include "failure.h"
#include "inspect.h"
#include "inspect_report.h"
#include "interrupt.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

constexpr char kInspectFooter[] =
    "Files named *.pcm hold bare interleaved 16-bit samples, as the filter dumps them. They do not state\n"
    "their channel count and sample rate. The two files of a dump session (sonivex_EFFECT_input_ID.pcm\n"
    "and sonivex_EFFECT_output_ID.pcm) are compared with each other.\n"
    "The exit codes are those of `sonivex render`.\n";
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
        throw Failure(ExitCode::Usage, "FILE or --pair is required (try \"sonivex inspect --help\")");
    if (!choices.pair.empty()) choices.request.pair = {choices.pair.at(0), choices.pair.at(1)};
    choices.request.hints.channels = parseChannels(choices.channels);
    installSignalHandlers();
    av_log_set_level(AV_LOG_QUIET);
    ResultStream result(ResultStream::Prints::ToStandardError);
    const InspectReport report = inspect(choices.request);
    result.write(choices.json ? asJson(report) : asText(report));
    std::vector<MeasuredInput> inputs;
    for (const InspectedFile& file : report.files) inputs.push_back({file.path, file.damage});
    failIfDamaged(inputs);
}

}  // namespace

std::function<void()> addInspectCommand(CLI::App& program) {
    auto choices = std::make_shared<InspectChoices>();
    CLI::App* command = program.add_subcommand(
        "inspect", "Measure the levels of files, and the latency and gain between two of them");
    command->footer(kInspectFooter);
    command->add_option("FILE", choices->request.files, "Audio files or dump files")->option_text(" ");
    command
        ->add_option("--pair", choices->pair,
                     "Measure the latency and gain from IN to OUT, whatever their\nnames")
        ->option_text("IN OUT")
        ->expected(2);
    command
        ->add_option("--channels", choices->channels,
                     "Channel count of .pcm files, 1 to 8; two counts, as in 6,2,\n"
                     "if the effect's output has a different one")
        ->option_text("N[,M]")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return parseChannels(text).empty() ? "must be N or N,M, each 1 to 8, not " + text
                                                   : std::string();
            },
            "", "channels"));
    command->add_option("--rate", choices->request.hints.rate_hz, "Sample rate of .pcm files (default 48000)")
        ->option_text("HZ")
        ->check(CLI::Range(kLowestRate_hz, kHighestRate_hz));
    command->add_flag("--json", choices->json, "Print everything as one JSON object");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
