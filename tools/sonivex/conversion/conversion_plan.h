#pragma once

#include <string>
#include <vector>

#include "audio_spec.h"
#include "conversion_settings.h"
#include "effect.h"

namespace sonivex_tool {

/** How audio is converted for a chain of effects. */
struct ConversionPlan {
    AudioSpec work;                  // what the first effect gets: interleaved 16-bit samples
    std::vector<std::string> notes;  // for the user, one line each: what is converted to what
};

/** Chooses the sample rate and layout in which a chain of effects gets audio of the spec `input`.
 *
 *  @throw Failure (UnsupportedAudio) if none makes it fit, or if one is needed in spite of `strict` */
ConversionPlan planConversion(const AudioSpec& input, const std::vector<const Effect*>& chain,
                              const ConversionSettings& settings);

}  // namespace sonivex_tool
