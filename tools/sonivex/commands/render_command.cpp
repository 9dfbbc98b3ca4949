#include "commands.h"

#include <memory>
#include <string>
#include <vector>

#include "failure.h"
#include "interrupt.h"
#include "plugin_search.h"
#include "preparation.h"
#include "preset_files.h"
#include "render.h"
#include "render_choices.h"
#include "render_preset.h"
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
    "  0  success                          7  OUT cannot be written\n"
    "  1  internal error                   8  no space left for OUT\n"
    "  2  invalid command line             9  no format or encoder for OUT\n"
    "  3  IN cannot be opened             10  plug-in not found\n"
    "  4  no usable audio in IN           11  the plug-in lacks the effect\n"
    "  5  the effect cannot process IN's  12  the filter failed\n"
    "     channels or sample rate         13  a part of IN is lost; OUT is complete\n"
    "  6  OUT already exists              14  some files of a batch failed\n"
    "                                    130  interrupted (Ctrl-C)\n"
    "                                    143  terminated\n";

void run(CLI::App& command, RenderChoices& choices) {
    if (choices.list_presets) {
        ResultStream(ResultStream::Prints::Nowhere).write(presetList());
        return;
    }
    usePreset(command, choices);
    checkChoices(choices);
    const bool has_many_files = choices.batch.isChosen();
    const bool only_saves = !choices.save_preset.empty() && !has_many_files &&
                            choices.settings.input.path.empty() && choices.settings.output.path.empty();
    if (!has_many_files && !only_saves) checkPaths(choices);
    if (!choices.save_preset.empty()) savePreset(command, choices);
    if (only_saves) return;
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
        if (has_many_files) {
            std::vector<std::string> key_files = {findPluginFile(choices.plugin)};
            if (!choices.preset.empty()) key_files.push_back(findPreset(choices.preset).string());
            choices.batch.run(key_files, choices, console, result);
            return;
        }
        if (choices.settings.dry_run) {
            const Preparation preparation(choices.settings, plugin, {});
            if (choices.json) {
                result.write(describeJson(preparation, choices.settings));
            } else if (!choices.quiet) {
                result.write(describeText(preparation, choices.settings));
            }
            return;
        }
        const RenderReport report = render(choices.settings, plugin, console);
        if (choices.json) {
            result.write(asJson(report));
        } else if (!choices.quiet) {
            result.write(asText(report));
        }
        if (report.dump_bytes_missing > 0) {
            throw Failure(ExitCode::NoSpace, "the dump in \"" + report.dump_folder + "\" is incomplete: " +
                                                 std::to_string(report.dump_bytes_missing) +
                                                 " bytes did not fit; OUT is complete");
        }
        if (report.damage.isDamaged() && !choices.settings.ignore_damage) {
            throw Failure(
                ExitCode::InputDamaged,
                "a part of \"" + report.input.path +
                    "\" is lost; OUT holds the rest and is complete (--ignore-damage accepts this)");
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
        program.add_subcommand("render", "Process the audio of a file with effects and write a new file");
    command->footer(kRenderFooter);
    addRenderOptions(*command, *choices);
    choices->batch.addTo(*command);
    return [command, choices] { run(*command, *choices); };
}

}  // namespace sonivex_tool
