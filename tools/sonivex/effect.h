#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** What the program must know of an effect from outside: how to ask for it and what it takes. */
struct Effect {
    std::string name;                    // as on the command line
    std::string title;                   // for messages
    std::string enable_option;           // member of the filter's option object that switches it on
    std::string exported_function;       // a plug-in that has the effect exports this
    std::vector<int> channels;           // channel counts that it processes; others pass through untouched
    std::vector<int> rates_hz;           // likewise sample rates
    int block_frames;                    // it works in blocks of so many frames
    int own_delay_frames;                // by which it is late beyond the queueing of its blocks
    std::optional<int> output_channels;  // what comes out, when that is not what went in
};

/** Every effect that the filter may have, the default one first. */
const std::vector<Effect>& allEffects();

/** Their names, in that order. */
std::vector<std::string> effectNames();

/** By how many frames the output of `effect` is late when all its calls have `call_frames`; nothing when such
 * calls would bring silence in the middle of the sound. */
std::optional<int64_t> effectDelayFrames(const Effect& effect, int call_frames);

/** The effect of that name, or null. */
const Effect* findEffect(const std::string& name);

/** Empty when `effect` processes such audio; else why it would pass it on untouched. */
std::string whyUnsupported(const Effect& effect, int channels, int rate_hz);

/** The filter's options as the user set them; what was not set stays as the filter has it. */
struct FilterOptions {
    std::optional<std::string> surround_type;  // "3DSurround" or "MegaBass"
    std::optional<int> surround_mode;          // 1..3
    bool no_limiter = false;                   // surround: clip instead of limiting
    std::optional<double> voice;               // dialogue: voice level, 1.0 and up
    bool dump = false;                         // write the PCM around the effect to files
};

/** The filter's option object, as JSON. */
std::string optionsJson(const Effect& effect, const FilterOptions& options);

}  // namespace sonivex_tool
