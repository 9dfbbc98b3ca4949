#include "output_check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "models/surround_model.h"
#include "unit_scale.h"

namespace compare {
namespace {

constexpr std::size_t kLimiterBlockSamples = 480;

// Prints three significant digits.
std::string text(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%.3g", value);
    return buffer;
}

// Output of an engine with this latency, cut to the length of the input.
template <typename Sample>
std::vector<Sample> delayed(const std::vector<Sample>& ears, std::size_t delay_frames) {
    std::vector<Sample> late(ears.size(), Sample{});
    const std::size_t silent_samples = std::min(2 * delay_frames, ears.size());
    std::copy_n(ears.begin(), ears.size() - silent_samples,
                late.begin() + static_cast<std::ptrdiff_t>(silent_samples));
    return late;
}

std::string comparePcm(const Ears& ears, const std::vector<std::int16_t>& expected) {
    int furthest = 0;
    std::size_t equal = 0;
    std::vector<float> units(ears.size());
    sonivex::unitScaleToInt16Units(ears.data(), static_cast<int>(ears.size()), units.data());
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!std::isfinite(units[i])) throw std::runtime_error("not finite at sample " + std::to_string(i));
        const int deviation = std::abs(static_cast<int>(std::lround(units[i])) - expected[i]);
        furthest = std::max(furthest, deviation);
        equal += deviation == 0 ? 1 : 0;
    }
    if (furthest > kPcmTolerance) {
        throw std::runtime_error("off by " + std::to_string(furthest) + " LSB of 16-bit PCM");
    }
    const double share = static_cast<double>(equal) / static_cast<double>(units.size());
    return furthest == 0 ? "all equal in 16 bits"
                         : "within 1 LSB of 16 bits, " + text(1e6 * (1 - share)) + " in a million differ";
}

std::string compareFloats(const Ears& ears, const std::vector<double>& expected) {
    double furthest = 0;
    for (std::size_t i = 0; i < ears.size(); ++i) {
        const double deviation = std::abs(static_cast<double>(ears[i]) - expected[i]);
        if (!(deviation <= kFloatTolerance)) {  // true for a NaN as well
            throw std::runtime_error("off by " + text(deviation) + " of full scale at sample " +
                                     std::to_string(i));
        }
        furthest = std::max(furthest, deviation);
    }
    return "within " + text(furthest) + " of full scale";
}

}  // namespace

Reference convolveDirectly(const Layout& layout, const Material& material) {
    model::Rendering rendering(layout.type, static_cast<int>(layout.channels()), kMode);
    Reference reference{rendering.process(model::toUnitScale(material.pcm)), {}};
    model::OutputStage output(true);
    for (std::size_t i = 0; i < reference.ears.size(); i += kLimiterBlockSamples) {
        const auto first = reference.ears.begin() + static_cast<std::ptrdiff_t>(i);
        const model::Samples block =
            output.process({first, first + static_cast<std::ptrdiff_t>(kLimiterBlockSamples)});
        reference.limited.insert(reference.limited.end(), block.begin(), block.end());
    }
    return reference;
}

double Reference::peak() const {
    double peak = 0;
    for (const double sample : ears) peak = std::max(peak, std::abs(sample));
    return peak;
}

std::string checkOutput(Engine& engine, const Material& material, const Reference& reference) {
    Ears ears;
    for (std::size_t frame = 0; frame < material.frames(); frame += engine.callFrames()) {
        engine.process(frame);
        engine.appendOutput(ears);
    }
    try {
        if (ears.size() != reference.ears.size()) throw std::runtime_error("not as long as the reference");
        return engine.isLimitedPcm() ? comparePcm(ears, delayed(reference.limited, engine.delay_frames()))
                                     : compareFloats(ears, delayed(reference.ears, engine.delay_frames()));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("the output of " + engine.name() + " is " + error.what());
    }
}

}  // namespace compare
