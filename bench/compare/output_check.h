// Every engine's output against convolution by its definition, in double.
#pragma once

#include <string>

#include "engine.h"
#include "material.h"

namespace compare {

/** What the ears hear of a material by direct convolution. */
struct Reference {
    std::vector<double> ears;           // full scale 1, interleaved
    std::vector<std::int16_t> limited;  // the same behind the limiter, as 16-bit PCM

    double peak() const;
};

Reference convolveDirectly(const Layout& layout, const Material& material);

/** Furthest that an output in floats may be from the reference, full scale 1. */
inline constexpr double kFloatTolerance = 1e-6;
/** The same for 16-bit PCM, steps. */
inline constexpr int kPcmTolerance = 1;

/** Run a new engine through its material once and compare each sample: silence for the engine's delay, then
 *  the reference, as far as the material lasts.
 *  @return what was seen, for the table. Throws std::runtime_error when a sample is beyond the tolerance. */
std::string checkOutput(Engine& engine, const Material& material, const Reference& reference);

}  // namespace compare
