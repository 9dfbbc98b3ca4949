#include "render_preset.h"

#include <algorithm>

#include "console.h"
#include "option_checks.h"
#include "output_file.h"
#include "preset_files.h"
#include "preset_options.h"

namespace sonivex_tool {
namespace {

constexpr char kPresetGroup[] = "Presets";

}  // namespace

void addPresetOptions(CLI::App& command, RenderChoices& choices) {
    command
        .add_option("--preset", choices.preset,
                    "Take the options that are not on the command line from this\n"
                    "preset; a name with a slash is a file")
        ->option_text("NAME|FILE")
        ->check(notEmpty("a preset"))
        ->group(kPresetGroup);
    command
        .add_option("--save-preset", choices.save_preset,
                    "Save the options as a preset, in the user's folder or in a\n"
                    "file; without IN and OUT, do nothing else")
        ->option_text("NAME|FILE")
        ->check(notEmpty("a preset"))
        ->group(kPresetGroup);
    command
        .add_flag("--list-presets", choices.list_presets,
                  "List the presets and where they are, and do nothing else")
        ->group(kPresetGroup);
}

void usePreset(CLI::App& command, const RenderChoices& choices) {
    if (choices.preset.empty()) return;
    const auto path = findPreset(choices.preset);
    applyPreset(command, readPreset(path), path.string());
}

void savePreset(const CLI::App& command, const RenderChoices& choices) {
    const std::string path = savedPresetPath(choices.save_preset).string();
    const bool replace = choices.settings.output.replace;
    const std::string text = presetOf(command);
    OutputFile::check(path, replace);
    OutputFile file(path, replace);
    avio_write(file.io(), reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    file.commit();
    Console(choices.quiet).note("saved the preset \"" + path + "\"");
}

std::string presetList() {
    const auto presets = allPresets();
    size_t name_width = 0;
    size_t title_width = 0;
    for (const PresetFile& preset : presets) {
        name_width = std::max(name_width, preset.name.size());
        title_width = std::max(title_width, preset.title.size());
    }
    std::string list;
    for (const PresetFile& preset : presets) {
        list += preset.name + std::string(name_width + 2 - preset.name.size(), ' ');
        list += preset.title + std::string(title_width + 2 - preset.title.size(), ' ');
        list += preset.path.string() + "\n";
    }
    return list;
}

}  // namespace sonivex_tool
