#include "preset_options.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>

#include "effect_names.h"
#include "failure.h"
#include "nearest_word.h"

namespace sonivex_tool {
namespace {

struct PresetOption {
    std::string name;
    std::string effect;  // that has the option; empty: any
};

const std::vector<PresetOption>& presetOptions() {
    static const std::vector<PresetOption> options = {
        {"effect", ""},
        {"voice", "dialogue"},
        {"type", "surround"},
        {"mode", "surround"},
        {"no-limiter", "surround"},
        {"tail", "surround"},
        {"rate", ""},
        {"layout", ""},
        {"strict", ""},
        {"no-dither", ""},
        {"target-lufs", ""},
        {"true-peak", ""},
        {"timeline", ""},
        {"trim-start", ""},
        {"format", ""},
        {"codec", ""},
        {"bitrate", ""},
        {"sample-format", ""},
        {"keep-others", ""},
        {"audio-only", ""},
    };
    return options;
}

std::string typed(const CLI::App& command, const std::string& name) {
    const CLI::Option* option = command.get_option("--" + name);
    return option->count() > 0 ? option->results().back() : std::string();
}

bool isFlag(const CLI::Option& option) {
    return option.get_expected_max() == 0;
}

// The syntax of presets has no escapes, and its reader takes some characters for itself even in quotes. Every
// value that means something consists of these.
bool canStandInAPreset(const std::string& value) {
    return std::all_of(value.begin(), value.end(), [](char character) {
        const bool is_letter =
            (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
        const bool is_digit = character >= '0' && character <= '9';
        return is_letter || is_digit ||
               std::string_view("_-+.,:/()").find(character) != std::string_view::npos;
    });
}

[[noreturn]] void refuseToSave(const std::string& name, const std::string& value) {
    std::string why = "cannot save --";
    why.append(name).append(" in a preset: \"").append(value);
    throw Failure(ExitCode::Usage, why.append("\" has a character that it cannot hold"));
}

/** Applies the items of one preset, and knows what the command line itself has. */
class PresetReader {
  public:
    PresetReader(CLI::App& command, const std::string& file)
        : command_(command),
          file_(file),
          typed_effects_(typed(command, "effect")),
          typed_type_(typed(command, "type")) {
        for (const PresetOption& option : presetOptions()) {
            if (command.count("--" + option.name) > 0) typed_.insert(option.name);
        }
    }

    // CLI11's reader ignores lines of one or two letters.
    void checkLines(const std::string& text) const {
        std::istringstream lines(text);
        int number = 0;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            CLI::detail::trim(line);
            if (line.empty() || line.size() > 2 || line.front() == '#' || line.front() == ';') continue;
            refuse("line " + std::to_string(number) + ": \"" + line + "\" sets no option");
        }
    }

    void apply(const CLI::ConfigItem& item) {
        if (!item.parents.empty()) refuse("a preset has no sections");
        const PresetOption& option = optionOf(item.name);
        if (!seen_.insert(option.name).second) refuse("\"" + option.name + "\" is given twice");
        if (typed_.contains(option.name) || isLeftOut(option)) return;
        try {
            give(*command_.get_option("--" + option.name), item);
        } catch (const CLI::ParseError& error) {
            refuse(error.what());
        }
    }

  private:
    [[noreturn]] void refuse(const std::string& why) const {
        throw Failure(ExitCode::Usage, "cannot use the preset \"" + file_ + "\": " + why);
    }

    const PresetOption& optionOf(const std::string& name) const {
        const auto& options = presetOptions();
        const auto found =
            std::find_if(options.begin(), options.end(), [&](const auto& each) { return each.name == name; });
        if (found != options.end()) return *found;
        if (command_.get_option_no_throw("--" + name) != nullptr)
            refuse("\"" + name + "\" belongs on the command line, not in a preset");
        refuse("unknown option \"" + name + "\"" + didYouMean(name, presetOptionNames()));
    }

    bool isLeftOut(const PresetOption& option) const {
        if (option.name == "mode" && !typed_type_.empty() && typed_type_ != "MegaBass") return true;
        if (option.effect.empty() || typed_effects_.empty()) return false;
        const auto chain = chainOf(typed_effects_);
        return std::none_of(chain.begin(), chain.end(),
                            [&](const Effect* effect) { return effect->name == option.effect; });
    }

    // The reader splits a value at its commas.
    static void give(CLI::Option& option, const CLI::ConfigItem& item) {
        const std::string value = CLI::detail::join(item.inputs, ",");
        option.add_result(isFlag(option) ? option.get_flag_value(item.name, value) : value);
        option.run_callback();
    }

    CLI::App& command_;
    std::string file_;
    std::string typed_effects_;
    std::string typed_type_;
    std::set<std::string> typed_;
    std::set<std::string> seen_;
};

}  // namespace

std::vector<std::string> presetOptionNames() {
    std::vector<std::string> names;
    for (const PresetOption& option : presetOptions()) names.push_back(option.name);
    return names;
}

void applyPreset(CLI::App& command, const std::string& text, const std::string& file) {
    PresetReader reader(command, file);
    reader.checkLines(text);
    std::istringstream lines(text);
    for (const CLI::ConfigItem& item : CLI::ConfigTOML().from_config(lines)) reader.apply(item);
}

std::string presetOf(const CLI::App& command) {
    std::string text = "# Saved by sonivex render --save-preset\n";
    for (const std::string& name : presetOptionNames()) {
        const CLI::Option& option = *command.get_option("--" + name);
        if (option.count() == 0) continue;
        const std::string value =
            isFlag(option) ? option.as<bool>() ? "true" : "false" : option.results().back();
        if (!canStandInAPreset(value)) refuseToSave(name, value);
        text.append(name).append(" = ").append(CLI::detail::convert_arg_for_ini(value)).append("\n");
    }
    return text;
}

}  // namespace sonivex_tool
