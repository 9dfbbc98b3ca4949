// Separates the effect of dialogue enhancement on two sounds that are mixed at its input. The gains come from
// the mix and multiplication by them is linear, so each sound can be traced alone. The code uses the model,
// because the engine does not expose its gains, and leaves out the limiter, which is not linear.
#pragma once

#include <vector>

#include "models/dialogue_model.h"

namespace model {

struct DialogueParts {
    std::vector<float> speech;      // interleaved stereo, full scale 1; the latency of three hops is removed
    std::vector<float> background;  // likewise
    std::vector<double> presence;   // one per block
};

/** Enhances the sum of two signals of interleaved stereo, in whole blocks, with the filter's gain floor 1 and
 *  gain scale 1. */
DialogueParts enhancedParts(const Samples& speech, const Samples& background, int rate_hz,
                            double voice_level);

}  // namespace model
