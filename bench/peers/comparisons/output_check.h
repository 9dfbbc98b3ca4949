// Checks every engine's output against direct convolution in double.
#pragma once

#include <string>

#include "engine.h"
#include "material.h"

namespace compare {

/** Signal at the ears by direct convolution. */
struct Reference {
    std::vector<double> ears;           // full scale 1, interleaved
    std::vector<std::int16_t> limited;  // the same after the limiter, as 16-bit PCM

    /** Largest magnitude before the limiter. */
    double peak() const;
};

/** Renders a material with the model of surround. */
Reference convolveDirectly(const Layout& layout, const Material& material);

/** Largest deviation of a float output from the reference, full scale 1. */
inline constexpr double kFloatTolerance = 1e-6;
/** Largest deviation of a 16-bit output from the reference, in LSB. */
inline constexpr int kPcmTolerance = 1;

/** Runs a new engine through its material once and compares each sample with silence for the engine's latency
 *  and then the reference, up to the end of the material.
 *  @return the result in words, for the table. Throws std::runtime_error if a sample is out of tolerance. */
std::string checkOutput(Engine& engine, const Material& material, const Reference& reference);

}  // namespace compare
