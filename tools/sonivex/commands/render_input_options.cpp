#include "option_checks.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

constexpr char kInputGroup[] = "Input";

}  // namespace

void addInputOptions(CLI::App& command, RenderChoices& choices) {
    RenderSettings& settings = choices.settings;
    command
        .add_option("IN", settings.input.path,
                    "The file to read, in any format that libavformat supports;\n"
                    "- for standard input")
        ->option_text(" ");
    command
        .add_option("--stream", settings.input.stream,
                    "Audio stream of IN to read: its number, counted from 0, or a\n"
                    "language such as eng. Without it, the one that IN marks as\n"
                    "default, or else the first")
        ->option_text("N|LANGUAGE")
        ->check(streamChoice())
        ->group(kInputGroup);
    command
        .add_option_function<std::string>(
            "--timeline",
            [&choices](const std::string& policy) { choices.ignore_timeline = policy == "ignore"; },
            "keep (default): fill gaps in the timestamps with silence and\n"
            "cut overlaps; ignore: join what is decoded")
        ->option_text("keep|ignore")
        ->check(oneOf({"keep", "ignore"}))
        ->group(kInputGroup);
    command
        .add_flag("--trim-start", settings.trim_start,
                  "Audio files: begin OUT with the first sample of IN, even if it\n"
                  "starts late. In a film the sound stays with the picture")
        ->group(kInputGroup);
    command.add_flag("--ignore-damage", settings.ignore_damage, "Exit with 0 even if a part of IN was lost")
        ->group(kInputGroup);
}

}  // namespace sonivex_tool
