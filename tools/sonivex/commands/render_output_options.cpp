#include "option_checks.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

constexpr char kOutputGroup[] = "Output";
constexpr char kMessageGroup[] = "Messages";

}  // namespace

void addOutputOptions(CLI::App& command, RenderChoices& choices) {
    OutputSettings& output = choices.settings.output;
    command.add_option("OUT", output.path, "The file to write; - for standard output")->option_text(" ");
    command
        .add_option("--format", output.format,
                    "Format of OUT as libavformat calls it, such as matroska; the\n"
                    "extension of OUT selects it otherwise")
        ->option_text("NAME")
        ->check(notEmpty("a format"))
        ->group(kOutputGroup);
    command
        .add_option("--codec", output.codec,
                    "Audio codec or encoder as libavcodec calls it, such as opus,\n"
                    "flac or pcm_s24le")
        ->option_text("NAME")
        ->check(notEmpty("a codec"))
        ->group(kOutputGroup);
    command
        .add_option("--bitrate", output.bit_rate,
                    "Bits per second of a lossy codec, of all channels together:\n"
                    "192k, 1.5M or 256000")
        ->option_text("RATE")
        ->transform(bitRate())
        ->group(kOutputGroup);
    command
        .add_option("--sample-format", output.sample_format,
                    "Samples of OUT: u8, s16, s24, s32, s64, flt or dbl")
        ->option_text("NAME")
        ->check(oneOf({"u8", "s16", "s24", "s32", "s64", "flt", "dbl"}))
        ->group(kOutputGroup);
    command.add_flag("--keep-others", output.keep_other_audio, "Copy the other audio streams of IN as well")
        ->group(kOutputGroup);
    command.add_flag("--audio-only", output.audio_only, "Copy neither video nor subtitles nor attachments")
        ->group(kOutputGroup);
    command.add_flag("--force,-f", output.replace, "Replace OUT if it exists")->group(kOutputGroup);
    command.add_flag("--dry-run", choices.settings.dry_run, "Tell what would be done, and write nothing")
        ->group(kOutputGroup);
}

void addMessageOptions(CLI::App& command, RenderChoices& choices) {
    command.add_flag("--json", choices.json, "Print the summary as one JSON object")->group(kMessageGroup);
    command.add_flag("--quiet,-q", choices.quiet, "Print nothing but errors (--json still prints)")
        ->group(kMessageGroup);
    command
        .add_flag("--verbose,-v", choices.verbose,
                  "Show the logs of the filter and of the FFmpeg libraries, and\n"
                  "what the effects print")
        ->group(kMessageGroup);
}

}  // namespace sonivex_tool
