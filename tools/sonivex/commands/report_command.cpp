extern "C" {
#include <libavutil/log.h>
}

#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "interrupt.h"
#include "option_checks.h"
#include "plugin_option.h"
#include "plugin_search.h"
#include "report.h"
#include "report_summary.h"
#include "result_stream.h"
#include "vorlin/log.h"

namespace sonivex_tool {
namespace {

constexpr char kReportFooter[] =
    "Each --effect is one version: names with commas between them run one after the other, and settings "
    "follow\n"
    "a name behind colons, as in --effect surround:type=MegaBass:mode=2 --effect "
    "dialogue:voice=3,normalizer.\n"
    "Settings: surround type, mode, limiter (on or off); dialogue voice. Without --effect there is a "
    "version\n"
    "for each effect that processes the channels of IN.\n"
    "The exit codes are those of `sonivex render`.\n";
constexpr double kLongest_s = 1e7;

struct ReportChoices {
    ReportSettings settings;
    std::vector<std::string> versions;
    std::string plugin;
    bool no_sound = false;
    bool json = false;
    bool quiet = false;
    bool verbose = false;
};

void run(ReportChoices& choices) {
    ReportSettings& settings = choices.settings;
    if (settings.input.path.empty())
        throw Failure(ExitCode::Usage, "IN is required (try \"sonivex report --help\")");
    if (settings.page.empty() && settings.picture_folder.empty())
        throw Failure(ExitCode::Usage, "-o or --png is required (try \"sonivex report --help\")");
    for (const std::string& text : choices.versions) settings.versions.push_back(parseVersion(text));
    requireDifferent(settings.versions);
    settings.has_sound = !choices.no_sound;
    installSignalHandlers();
    av_log_set_level(choices.verbose ? AV_LOG_WARNING : AV_LOG_QUIET);
    if (choices.verbose) Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    ResultStream result(choices.verbose ? ResultStream::Prints::ToStandardError
                                        : ResultStream::Prints::Nowhere);
    Console console(choices.quiet);
    try {
        const ReportResult made = makeReport(settings, loadPlugin(choices.plugin), console);
        console.clearBar();
        if (choices.json) {
            result.write(summaryJson(made.report));
        } else if (!choices.quiet) {
            result.write(summaryText(made.report, made.page_bytes));
        }
        if (made.report.damage.isDamaged())
            throw Failure(ExitCode::InputDamaged,
                          "a part of \"" + settings.input.path + "\" is lost; the report is of the rest");
    } catch (...) {
        console.clearBar();
        throw;
    }
}

void addVersionOptions(CLI::App& command, ReportChoices& choices) {
    ReportSettings& settings = choices.settings;
    command
        .add_option("--effect", choices.versions,
                    "A version to compare: effects with commas between them, and\ntheir settings behind "
                    "colons; give it "
                    "once for each version")
        ->option_text("NAME[:SETTING=VALUE...][,NAME...]")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command
        .add_option("--stream", settings.input.stream,
                    "Audio stream of IN: its number, counted from 0, or a language\nsuch as eng")
        ->option_text("N|LANGUAGE")
        ->check(streamChoice());
    command
        .add_option("--fps", settings.video_fps, "Frame rate of the accompanying video, for the load guard")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0));
    command
        .add_option("--speed", settings.playback_speed,
                    "Playback speed, by which --fps is multiplied; 1 is normal")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0));
}

void addPageOptions(CLI::App& command, ReportChoices& choices) {
    ReportSettings& settings = choices.settings;
    command.add_option("-o,--output", settings.page, "The page to write")
        ->option_text("FILE")
        ->check(notEmpty("a file"));
    command.add_option("--png", settings.picture_folder, "Write the pictures as PNG files into this folder")
        ->option_text("FOLDER")
        ->check(notEmpty("a folder"));
    command
        .add_option("--start", settings.stretch.start_s, "Where the sound of the players begins, in seconds")
        ->option_text("SECONDS")
        ->check(finiteFrom(0.0, kLongest_s));
    command
        .add_option("--length", settings.stretch.length_s, "How long the sound of the players is, in seconds")
        ->option_text("SECONDS")
        ->check(finiteFrom(0.0, kLongest_s));
    command.add_flag("--no-sound", choices.no_sound, "Leave the players out");
    command.add_flag("--force,-f", settings.replace, "Replace files that exist");
    command.add_flag("--json", choices.json, "Print the summary as one JSON object");
    command.add_flag("--quiet,-q", choices.quiet, "Print nothing but errors (--json still prints)");
    command.add_flag("--verbose,-v", choices.verbose, "Print the logs of the filter and of FFmpeg");
    addPluginOption(command, choices.plugin);
}

}  // namespace

std::function<void()> addReportCommand(CLI::App& program) {
    auto choices = std::make_shared<ReportChoices>();
    CLI::App* command = program.add_subcommand(
        "report", "Compare the original and effects in one page with players, pictures and figures");
    command->footer(kReportFooter);
    command->add_option("IN", choices->settings.input.path, "The file to read")->option_text(" ");
    addVersionOptions(*command, *choices);
    addPageOptions(*command, *choices);
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
