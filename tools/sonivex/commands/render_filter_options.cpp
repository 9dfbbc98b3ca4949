#include "option_checks.h"
#include "plugin_option.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

constexpr char kFilterGroup[] = "Filter";
constexpr double kLatestFlush_s = 1e9;  // about 32 years

}  // namespace

void addFilterOptions(CLI::App& command, RenderChoices& choices) {
    FilterSettings& filter = choices.settings.filter;
    addPluginOption(command, choices.plugin)->group(kFilterGroup);
    command
        .add_option("--frame-size", filter.call_frames,
                    "Samples per channel in each call of the filter, 1 to 4096\n"
                    "(default 1024); at least 64 with --threaded")
        ->option_text("N")
        ->check(CLI::Range(1, kLongestCallFrames))
        ->group(kFilterGroup);
    command
        .add_flag("--raw-latency", filter.keep_delay,
                  "Keep the filter's start-up latency; OUT is longer by it")
        ->group(kFilterGroup);
    command
        .add_flag("--threaded", filter.threaded,
                  "Run the filter on its own thread, as a player does. The\n"
                  "result is the same. This is slower, above all with a small\n"
                  "--frame-size")
        ->group(kFilterGroup);
    command
        .add_option("--flush-at", filter.flush_at_s,
                    "Flush the filter at this time in IN, as a player does when\n"
                    "it seeks; may be given more than once")
        ->option_text("SECONDS")
        ->allow_extra_args(false)
        ->check(finiteFrom(0.0, kLatestFlush_s))
        ->group(kFilterGroup);
    command
        .add_option("--dump", filter.dump_folder,
                    "Write the effect's 16-bit input and output to .pcm files in\n"
                    "this folder, for `sonivex inspect`")
        ->option_text("FOLDER")
        ->check(notEmpty("a folder"))
        ->group(kFilterGroup);
}

}  // namespace sonivex_tool
