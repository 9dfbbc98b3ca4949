#include <algorithm>
#include <limits>
#include <memory>
#include <string>

#include "commands.h"
#include "effect_names.h"
#include "failure.h"
#include "interrupt.h"
#include "option_checks.h"
#include "play.h"
#include "plugin_option.h"
#include "plugin_search.h"
#include "result_stream.h"
#include "vorlin/log.h"

namespace sonivex_tool {
namespace {

constexpr char kPlayFooter[] =
    "Keys:\n"
    "  e            effect on or off, at the same loudness     n      next effect\n"
    "  l            same loudness on or off                    t, m   surround: type, mode\n"
    "  left, right  5 s back or forward                        v, V   dialogue: voice up, down\n"
    "  pageup, pagedown  60 s back or forward                  +, -   volume (also up, down)\n"
    "  space        pause                                      r      start the filter again\n"
    "  q            quit\n"
    "Without a terminal FILE is played to its end, with a line every five seconds.\n"
    "The exit codes are those of `sonivex render`, and 15 if no sound card plays.\n";
constexpr double kLowestVolume_db = -60.0;
constexpr double kLatestStart_s = 1e7;
constexpr double kHighestVoice = std::numeric_limits<float>::max();

struct PlayChoices {
    PlaySettings settings;
    std::string effects = allEffects().front().name;
    std::string script;
    std::string plugin;
    bool begins_with_original = false;
    bool is_not_matching = false;
    bool no_screen = false;
    bool list_devices = false;
    bool verbose = false;
};

void run(PlayChoices& choices) {
    installSignalHandlers();
    av_log_set_level(choices.verbose ? AV_LOG_WARNING : AV_LOG_QUIET);
    if (choices.verbose) Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    ResultStream result(choices.verbose ? ResultStream::Prints::ToStandardError
                                        : ResultStream::Prints::Nowhere);
    if (choices.list_devices) {
        for (const std::string& name : listSoundCards()) result.write(name + "\n");
        return;
    }
    PlaySettings& settings = choices.settings;
    if (settings.playback.input.path.empty())
        throw Failure(ExitCode::Usage, "FILE is required (try \"sonivex play --help\")");
    settings.playback.choice.chain = chainOf(choices.effects);
    settings.playback.hears_effect = !choices.begins_with_original;
    settings.playback.is_matching = !choices.is_not_matching;
    settings.script = parseScript(choices.script);
    settings.uses_screen = !choices.no_screen;
    const auto plugin = loadPlugin(choices.plugin);
    for (const Effect* effect : settings.playback.choice.chain) {
        if (!plugin->exports(effect->exported_function.c_str()))
            throw Failure(ExitCode::EffectMissing, "the plug-in does not have " + effect->title);
    }
    play(settings, plugin, result, openSoundCard);
}

void addSoundOptions(CLI::App& command, PlayChoices& choices) {
    PlaybackSettings& playback = choices.settings.playback;
    FilterOptions& options = playback.choice.options;
    command
        .add_option("--effect", choices.effects,
                    "normalizer (default), surround or dialogue; several in a row\nwith commas between them")
        ->option_text("NAME[,NAME...]")
        ->check(effectChain());
    command.add_option("--type", options.surround_type, "surround: 3DSurround or MegaBass")
        ->option_text("NAME")
        ->check(oneOf({"3DSurround", "MegaBass"}));
    command.add_option("--mode", options.surround_mode, "surround: MegaBass mode, 1 to 3")
        ->option_text("NUMBER")
        ->check(CLI::Range(1, 3));
    command
        .add_option("--voice", options.voice, "dialogue: how readily speech is raised; 1 (default) or more")
        ->option_text("NUMBER")
        ->check(finiteFrom(1.0, kHighestVoice));
    command.add_flag("--no-limiter", options.no_limiter, "surround: clip peaks instead of limiting them");
    command.add_flag("--original", choices.begins_with_original,
                     "Begin with the original instead of the effect");
    command.add_flag("--no-match", choices.is_not_matching,
                     "Do not lower the louder of original and effect to the\nloudness of the other");
    command.add_option("--volume", playback.volume_db, "Volume in dB, from -60 to 0 (default)")
        ->option_text("DB")
        ->check(finiteFrom(kLowestVolume_db, 0.0));
    command
        .add_option("--fps", playback.video_fps,
                    "Frame rate of a video that plays along; the filter's load\nguard watches with it")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0));
}

void addPlayingOptions(CLI::App& command, PlayChoices& choices) {
    PlaybackSettings& playback = choices.settings.playback;
    command
        .add_option("--stream", playback.input.stream,
                    "Audio stream to play: its number, counted from 0, or a\nlanguage such as eng")
        ->option_text("N|LANGUAGE")
        ->check(streamChoice());
    command.add_option("--start", playback.start_s, "Position to begin at, in seconds")
        ->option_text("SECONDS")
        ->check(finiteFrom(0.0, kLatestStart_s));
    command
        .add_option("--device", choices.settings.device, "Sound card to play on, as --list-devices names it")
        ->option_text("NAME")
        ->check(notEmpty("a sound card"));
    command.add_flag("--list-devices", choices.list_devices, "Print the names of the sound cards");
    command
        .add_option("--script", choices.script,
                    "Keys that press themselves, each after so many seconds of\nplaying, as in \"2.5 e; 4 "
                    "right; 6 q\"")
        ->option_text("TEXT");
    command.add_flag("--no-screen", choices.no_screen, "Print plain lines, even on a terminal");
    command.add_flag("--quiet,-q", choices.settings.is_quiet, "Print no plain lines");
    command.add_flag("--verbose,-v", choices.verbose, "Print the logs of the filter and of FFmpeg");
    addPluginOption(command, choices.plugin);
}

}  // namespace

std::function<void()> addPlayCommand(CLI::App& program) {
    auto choices = std::make_shared<PlayChoices>();
    CLI::App* command = program.add_subcommand("play", "Play a file through the filter on the sound card");
    command->footer(kPlayFooter);
    command
        ->add_option("FILE", choices->settings.playback.input.path,
                     "The file to play, in any format that libavformat supports;\n- for standard input")
        ->option_text(" ");
    addSoundOptions(*command, *choices);
    addPlayingOptions(*command, *choices);
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
