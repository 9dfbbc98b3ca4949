#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "effect_timing.h"

namespace sonivex_tool {

// The effects of the filter as the command line knows them: their names, the audio that they process, their
// delay, and the option object that switches one on.
//
//   const Effect* effect = findEffect("surround");
//   const std::string reason = whyUnsupported(*effect, channels, rate_hz);  // empty: supported
//   player.setOptions(optionsJson(*effect, options));

/** An effect as seen from outside. */
struct Effect {
    std::string name;                    // as on the command line
    std::string title;                   // for messages
    std::string enable_option;           // member of the filter's option object that switches it on
    std::string exported_function;       // exported by every plug-in that has the effect
    std::vector<int> channels;           // channel counts that it processes; others pass through untouched
    std::vector<int> rates_hz;           // sample rates that it processes; others pass through untouched
    sonivex::EffectTiming timing;        // blocks and delay; responseTailFrames() tells the tail
    std::optional<int> output_channels;  // channels of the output, if other than those of the input
};

/** Returns every effect that the filter may have, the default one first. */
const std::vector<Effect>& allEffects();

/** Returns the names of all effects, in the order of allEffects(). */
std::vector<std::string> effectNames();

/** Returns the delay of `effect`'s output in frames when every call has `call_frames` frames.
 *  @return nothing if calls of this length cause silent gaps in the middle of the sound (effect_timing.h) */
std::optional<int64_t> effectDelayFrames(const Effect& effect, int call_frames);

/** Returns the effect of that name, or null. */
const Effect* findEffect(const std::string& name);

/** Explains, in a message for the user, why `effect` passes such audio through untouched.
 *  @return empty if the effect processes it */
std::string whyUnsupported(const Effect& effect, int channels, int rate_hz);

/** The filter's options as the user set them; a missing option keeps the filter's default. */
struct FilterOptions {
    std::optional<std::string> surround_type;  // "3DSurround" or "MegaBass"
    std::optional<int> surround_mode;          // 1..3
    bool no_limiter = false;                   // surround: clip instead of limiting
    std::optional<double> voice;               // dialogue: voice level, 1.0 and up
    bool dump = false;                         // write the PCM around the effect to files
};

/** Returns the filter's option object as JSON: `effect` switched on, and every option that is set. */
std::string optionsJson(const Effect& effect, const FilterOptions& options);

}  // namespace sonivex_tool
