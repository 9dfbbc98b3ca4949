// The command line of "render" and its presets. The input is arguments, one on each line, then an empty line,
// then a preset. What is accepted must print as a preset that is accepted and prints the same.

#include <cstdint>
#include <string>
#include <vector>

#include "failure.h"
#include "preset_options.h"
#include "render_choices.h"
#include "support/byte_stream.h"
#include "support/promise.h"
#include "usage_error.h"

namespace {

using fuzz::require;

/** Parses as the program does, and returns the choices as a preset; nothing if they are refused. */
std::optional<std::string> printed(const std::vector<std::string>& arguments, const std::string& preset) {
    CLI::App app("", "render");
    sonivex_tool::RenderChoices choices;
    sonivex_tool::addRenderOptions(app, choices);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(reversed);
    } catch (const CLI::Success&) {
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        (void)sonivex_tool::explainUsageError(app, error);
        return std::nullopt;
    }
    try {
        sonivex_tool::applyPreset(app, preset, "fuzz.preset");
        sonivex_tool::checkChoices(choices);
        return sonivex_tool::presetOf(app);
    } catch (const sonivex_tool::Failure& failure) {
        require(failure.exitCode() == sonivex_tool::ExitCode::Usage,
                "a refused preset is a mistake of the user");
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::ByteStream stream(bytes, size);
    std::vector<std::string> arguments;
    while (!stream.isEmpty()) {
        const std::string_view line = stream.textUntil('\n');
        if (line.empty()) break;
        // The system gives no argument with a zero byte in it.
        arguments.emplace_back(line.substr(0, line.find('\0')));
    }
    const std::string preset(stream.restOfText());
    if (preset.find('\0') != std::string::npos) return 0;  // readPreset refuses it

    const auto saved = printed(arguments, preset);
    if (!saved) return 0;
    const auto saved_again = printed({}, *saved);
    require(saved_again.has_value(), "a saved preset can be used");
    require(saved_again == saved, "a saved preset prints the same");
    return 0;
}
