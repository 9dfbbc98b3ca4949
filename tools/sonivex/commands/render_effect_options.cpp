#include <limits>

#include "effect_names.h"
#include "option_checks.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

constexpr char kEffectGroup[] = "Effects";
constexpr double kHighestVoice = std::numeric_limits<float>::max();  // the effect computes in float

}  // namespace

void addEffectOptions(CLI::App& command, RenderChoices& choices) {
    FilterSettings& filter = choices.settings.filter;
    command
        .add_option("--effect", choices.effects,
                    "normalizer (default), surround or dialogue; several in a row\n"
                    "with commas between them, as in dialogue,normalizer")
        ->option_text("NAME[,NAME...]")
        ->check(effectChain())
        ->group(kEffectGroup);
    command
        .add_option("--voice", filter.options.voice,
                    "dialogue: how readily speech is raised; 1 (default) or more")
        ->option_text("NUMBER")
        ->check(finiteFrom(1.0, kHighestVoice))
        ->group(kEffectGroup);
    command.add_option("--type", filter.options.surround_type, "surround: 3DSurround or MegaBass")
        ->option_text("NAME")
        ->check(oneOf({"3DSurround", "MegaBass"}))
        ->group(kEffectGroup);
    command.add_option("--mode", filter.options.surround_mode, "surround: MegaBass mode, 1 to 3")
        ->option_text("NUMBER")
        ->check(CLI::Range(1, 3))
        ->group(kEffectGroup);
    command
        .add_flag("--no-limiter", filter.options.no_limiter, "surround: clip peaks instead of limiting them")
        ->group(kEffectGroup);
    command
        .add_flag("--tail", filter.keep_tail,
                  "surround: let the reverberation decay after the end of IN;\n"
                  "OUT is longer by the length of the impulse responses")
        ->group(kEffectGroup);
    command
        .add_option("--fps", filter.video_fps,
                    "Frame rate of the accompanying video. The filter passes the\n"
                    "audio through from where processing cannot keep up with it.\n"
                    "A rate at which the filter processes nothing is refused")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0))
        ->group(kEffectGroup);
    command
        .add_option("--speed", filter.playback_speed,
                    "Playback speed, by which --fps is multiplied; 1 is normal")
        ->option_text("NUMBER")
        ->check(finiteFrom(0.0))
        ->group(kEffectGroup);
}

}  // namespace sonivex_tool
