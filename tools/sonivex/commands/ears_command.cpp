#include "commands.h"

extern "C" {
#include <libavutil/log.h>
}

#include <memory>
#include <string>
#include <vector>

#include "damaged_inputs.h"
#include "ears.h"
#include "interrupt.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

constexpr char kEarsFooter[] =
    "A sound is heard on the side of the ear that it reaches first and at which it is louder.\n"
    "The angle says how far to the side, by a simple model of hearing: 0 is the middle, +90\n"
    "is at the left ear and -90 at the right one. Front and back are not told apart.\n"
    "The exit codes are those of `sonivex render`.\n";

struct EarsChoices {
    std::string file;
    std::vector<std::string> segments;
    bool json = false;
};

CLI::Validator segmentText() {
    return CLI::Validator(
        [](const std::string& text) {
            Segment segment;
            return parseSegment(text, segment) ? std::string()
                                               : "must be NAME=FROM-TO in seconds, not " + text;
        },
        "", "segment");
}

void run(const EarsChoices& choices) {
    installSignalHandlers();
    av_log_set_level(AV_LOG_QUIET);
    ResultStream result(ResultStream::Prints::ToStandardError);
    std::vector<Segment> segments;
    for (const std::string& text : choices.segments) parseSegment(text, segments.emplace_back());
    const EarsReport report = measureEars(choices.file, segments);
    result.write(choices.json ? asJson(report) : asText(report));
    failIfDamaged({{choices.file, report.damage}});
}

}  // namespace

std::function<void()> addEarsCommand(CLI::App& program) {
    auto choices = std::make_shared<EarsChoices>();
    CLI::App* command =
        program.add_subcommand("ears", "Measure on which side a stereo file is heard through headphones");
    command->footer(kEarsFooter);
    command->add_option("FILE", choices->file, "A stereo file")->option_text(" ")->required();
    command
        ->add_option("--segment", choices->segments,
                     "A part of FILE to measure on its own, as NAME=FROM-TO in\n"
                     "seconds; may be given more than once")
        ->option_text("NAME=FROM-TO")
        ->allow_extra_args(false)
        ->check(segmentText());
    command->add_flag("--json", choices->json, "Print the results as one JSON array");
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
