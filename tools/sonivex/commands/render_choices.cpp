#include <algorithm>

#include "descriptor_input.h"
#include "effect_names.h"
#include "failure.h"
#include "render_choices.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void refuse(const std::string& line) {
    throw Failure(ExitCode::Usage, line + " (try \"sonivex render --help\")");
}

void checkOwner(const std::vector<const Effect*>& chain, const std::string& effects, bool is_given,
                const std::string& option, const std::string& owner) {
    if (!is_given) return;
    const bool is_in_chain =
        std::any_of(chain.begin(), chain.end(), [&](const Effect* effect) { return effect->name == owner; });
    if (!is_in_chain) {
        refuse(option + " belongs to " + owner + ", and the effect is " + effects + ": add --effect " +
               owner);
    }
}

void checkEffectOptions(const FilterSettings& filter, const std::string& effects) {
    const FilterOptions& options = filter.options;
    checkOwner(filter.chain, effects, options.voice.has_value(), "--voice", "dialogue");
    checkOwner(filter.chain, effects, options.surround_type.has_value(), "--type", "surround");
    checkOwner(filter.chain, effects, options.surround_mode.has_value(), "--mode", "surround");
    checkOwner(filter.chain, effects, options.no_limiter, "--no-limiter", "surround");
    checkOwner(filter.chain, effects, filter.keep_tail, "--tail", "surround");
    if (options.surround_mode && options.surround_type != "MegaBass")
        refuse("--mode belongs to the type MegaBass: add --type MegaBass");
}

}  // namespace

void addRenderOptions(CLI::App& command, RenderChoices& choices) {
    addInputOptions(command, choices);
    addOutputOptions(command, choices);
    addEffectOptions(command, choices);
    addSoundOptions(command, choices);
    addFilterOptions(command, choices);
    addPresetOptions(command, choices);
    addMessageOptions(command, choices);
}

void checkChoices(RenderChoices& choices) {
    RenderSettings& settings = choices.settings;
    settings.filter.chain = chainOf(choices.effects);
    settings.filter.options.dump = !settings.filter.dump_folder.empty();
    settings.input.timeline = choices.ignore_timeline ? TimelinePolicy::Ignore : TimelinePolicy::Keep;
    settings.conversion.dither = settings.output.dither = !choices.no_dither;
    settings.level.measure = !choices.no_measure;
    checkEffectOptions(settings.filter, choices.effects);
    if (settings.level.target_lufs && choices.no_measure)
        refuse("--no-measure excludes --target-lufs, which measures the loudness first");
    if (!settings.level.target_lufs && choices.true_peak_dbtp)
        refuse("--true-peak belongs to --target-lufs: add --target-lufs");
    if (choices.true_peak_dbtp) settings.level.true_peak_dbtp = *choices.true_peak_dbtp;
}

void checkPaths(const RenderChoices& choices) {
    const std::string& input = choices.settings.input.path;
    const std::string& output = choices.settings.output.path;
    if (input.empty() || output.empty()) refuse("IN and OUT are required");
    const auto names_descriptor = [](const std::string& path) { return path.rfind("pipe:", 0) == 0; };
    if (names_descriptor(input) && !isStandardInput(input))
        refuse("IN may be - or pipe:0 for standard input, but not \"" + input + "\"");
    if (names_descriptor(output) && !namesStandardOutput(output))
        refuse("OUT may be - or pipe:1 for standard output, but not \"" + output + "\"");
}

}  // namespace sonivex_tool
