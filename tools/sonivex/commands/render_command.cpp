#include "commands.h"

#include <cmath>
#include <limits>
#include <string>

#include "failure.h"
#include "interrupt.h"
#include "plugin_search.h"
#include "render.h"
#include "result_stream.h"
#include "vorlin/log.h"

namespace sonivex_tool {
namespace {

constexpr char kRenderFooter[] =
    "The extension of OUT selects its format. Without an extension OUT is WAV, with samples in IN's format.\n"
    "Sample rate, length and tags are kept, and OUT is aligned with IN to the sample. OUT appears only when\n"
    "it is complete.\n"
    "\n"
    "Exit codes:\n"
    "  0  success                           7  OUT cannot be written\n"
    "  1  internal error                    8  no space left for OUT\n"
    "  2  invalid command line              9  no format or encoder for OUT\n"
    "  3  IN cannot be opened              10  plug-in not found\n"
    "  4  no usable audio in IN            11  the plug-in lacks the effect\n"
    "  5  the effect cannot process IN's   12  the filter failed\n"
    "     channels or sample rate         130  interrupted (Ctrl-C)\n"
    "  6  OUT already exists              143  terminated\n";

constexpr double kHighestVoice = std::numeric_limits<float>::max();  // the effect computes in float

constexpr double kLatestFlush_s = 1e9;  // about 32 years

struct RenderChoices {
    RenderSettings settings;
    std::string effect = allEffects().front().name;
    std::string plugin;
    bool quiet = false;
    bool json = false;
    bool verbose = false;
};

// Accepts a finite number from `lowest` to `highest`.
CLI::Validator finiteFrom(double lowest, double highest = std::numeric_limits<double>::max()) {
    std::string range = "must be a finite number of at least " + CLI::detail::to_string(lowest);
    if (highest < std::numeric_limits<double>::max())
        range += " and at most " + CLI::detail::to_string(highest);
    return CLI::Validator(
        [lowest, highest, range](const std::string& text) {
            double number = 0.0;
            const bool is_good = CLI::detail::lexical_cast(text, number) && std::isfinite(number) &&
                                 number >= lowest && number <= highest;
            return is_good ? std::string() : range + ", not \"" + text + "\"";
        },
        "", "finite");
}

void addOptions(CLI::App& command, RenderChoices& choices) {
    RenderSettings& settings = choices.settings;
    command
        .add_option("IN", settings.input.path, "The file to read, in any format that libavformat supports")
        ->option_text(" ")
        ->required();
    command.add_option("OUT", settings.output.path, "The file to write")->option_text(" ")->required();

    const std::string effects = "Effect";
    command.add_option("--effect", choices.effect, "normalizer (default), surround or dialogue")
        ->option_text("NAME")
        ->check(CLI::IsMember(effectNames()))
        ->group(effects);
    command
        .add_option("--voice", settings.filter.options.voice,
                    "dialogue: how readily speech is raised; 1 (default) or more")
        ->option_text("NUMBER")
        ->check(finiteFrom(1.0, kHighestVoice))
        ->group(effects);
    command.add_option("--type", settings.filter.options.surround_type, "surround: 3DSurround or MegaBass")
        ->option_text("NAME")
        ->check(CLI::IsMember({"3DSurround", "MegaBass"}))
        ->group(effects);
    command.add_option("--mode", settings.filter.options.surround_mode, "surround: MegaBass mode, 1 to 3")
        ->option_text("NUMBER")
        ->check(CLI::Range(1, 3))
        ->group(effects);
    command
        .add_flag("--no-limiter", settings.filter.options.no_limiter,
                  "surround: clip peaks instead of limiting them")
        ->group(effects);
    command
        .add_flag("--tail", settings.filter.keep_tail,
                  "surround: let the reverberation decay after the end of IN;\n"
                  "OUT is longer by the length of the impulse responses")
        ->group(effects);
    command
        .add_option("--fps", settings.filter.video_fps,
                    "Frame rate of the accompanying video. The filter passes the\n"
                    "audio through if this rate is too high, or if processing\n"
                    "cannot keep up with it")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0))
        ->group(effects);
    command
        .add_option("--speed", settings.filter.playback_speed,
                    "Playback speed reported to the filter; 1 is normal")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0))
        ->group(effects);

    const std::string way = "Input and filter";
    command
        .add_option("--stream", settings.input.stream, "Audio stream of IN to read; the first is 0 (default)")
        ->option_text("N")
        ->check(CLI::Range(0, 9999))
        ->group(way);
    command
        .add_option("--plugin", choices.plugin,
                    "The filter's library. Without it, libSonivexFilter.so beside\n"
                    "this program, in ../lib from there, or on the library path")
        ->option_text("FILE")
        ->group(way);
    command
        .add_option("--frame-size", settings.filter.call_frames,
                    "Samples per channel in each call of the filter, 1 to 4096\n"
                    "(default 1024); at least 64 with --threaded")
        ->option_text("N")
        ->check(CLI::Range(1, kLongestCallFrames))
        ->group(way);
    command
        .add_flag("--raw-latency", settings.filter.keep_delay,
                  "Keep the filter's start-up latency; OUT is longer by it")
        ->group(way);
    command
        .add_flag("--threaded", settings.filter.threaded,
                  "Run the filter on its own thread, as a player does. The\n"
                  "result is the same. This is slower, above all with a small\n"
                  "--frame-size")
        ->group(way);

    command
        .add_option("--flush-at", settings.filter.flush_at_s,
                    "Flush the filter at this time in IN, as a player does when\n"
                    "it seeks; may be given more than once")
        ->option_text("SECONDS")
        ->allow_extra_args(false)
        ->check(finiteFrom(0.0, kLatestFlush_s))
        ->group(way);
    command
        .add_option("--dump", settings.filter.dump_folder,
                    "Write the effect's 16-bit input and output to .pcm files in\n"
                    "this folder, for `sonivex inspect`")
        ->option_text("FOLDER")
        ->check(CLI::Validator(
            [](const std::string& path) {
                return path.empty() ? std::string("must name a folder") : std::string();
            },
            "", "folder"))
        ->group(way);

    const std::string output = "Output and messages";
    command.add_flag("--force,-f", settings.output.replace, "Replace OUT if it exists")->group(output);
    command.add_flag("--json", choices.json, "Print the summary as one JSON object")->group(output);
    command.add_flag("--quiet,-q", choices.quiet, "Print nothing but errors (--json still prints)")
        ->group(output);
    command
        .add_flag("--verbose,-v", choices.verbose,
                  "Show the logs of the filter and of the FFmpeg libraries, and what\nthe effects print")
        ->group(output);
}

void run(RenderChoices& choices) {
    choices.settings.filter.chain = {findEffect(choices.effect)};
    choices.settings.filter.options.dump = !choices.settings.filter.dump_folder.empty();
    if (choices.settings.filter.keep_tail && choices.effect != "surround") {
        throw Failure(ExitCode::Usage,
                      "--tail needs --effect surround: no other effect has a reverberation tail");
    }
    installSignalHandlers();
    av_log_set_level(choices.verbose ? AV_LOG_WARNING : AV_LOG_QUIET);
    if (choices.verbose) Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    ResultStream result(
        choices.verbose ? ResultStream::Prints::ToStandardError : ResultStream::Prints::Nowhere,
        namesStandardOutput(choices.settings.output.path) ? ResultStream::Results::ToStandardError
                                                          : ResultStream::Results::ToStandardOutput);
    Console console(choices.quiet);
    try {
        const auto plugin = loadPlugin(choices.plugin);
        const RenderReport report = render(choices.settings, plugin, console);
        if (choices.json) {
            result.write(asJson(report));
        } else if (!choices.quiet) {
            result.write(asText(report));
        }
    } catch (...) {
        console.clearBar();
        throw;
    }
}

}  // namespace

std::function<void()> addRenderCommand(CLI::App& program) {
    auto choices = std::make_shared<RenderChoices>();
    CLI::App* command =
        program.add_subcommand("render", "Process the audio of a file with an effect and write a new file");
    command->footer(kRenderFooter);
    addOptions(*command, *choices);
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
