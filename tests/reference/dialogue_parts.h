// What dialogue enhancement does to each of two sounds that were mixed for it. The gains are those of the
// mix, and multiplying by them is linear, so each part can be followed by itself. Needs to look inside, so it
// is the model that is followed, without its limiter.
#pragma once

#include <vector>

#include "reference/dialogue_model.h"

namespace model {

struct DialogueParts {
    std::vector<float> speech;      // interleaved stereo, full scale 1; the delay of three hops is taken out
    std::vector<float> background;  // likewise
    std::vector<double> presence;   // of each block
};

/** @param speech, background interleaved stereo; the sum is enhanced. Whole blocks come out.
 *  Gains as the filter asks for: floor 1, scale 1. */
DialogueParts enhancedParts(const Samples& speech, const Samples& background, int rate_hz,
                            double voice_level);

}  // namespace model
