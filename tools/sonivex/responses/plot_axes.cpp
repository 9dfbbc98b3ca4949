#include "plot_axes.h"

#include <numbers>

#include "source_measures.h"

namespace sonivex_tool {

using sonivex_plotting::Axis;
using sonivex_plotting::linearAxis;
using sonivex_plotting::logarithmicAxis;
using sonivex_plotting::niceStep;
using sonivex_plotting::Tick;

namespace {

constexpr double kLowestEnvelope_db = -90.0;  // about the step of the tables' integers
constexpr double kLowestDecay_db = -70.0;
constexpr double kTimeTicks = 6.0;

}  // namespace

Axis impulseTimeAxis() {
    return linearAxis(0.0, kImpulseShown_ms, 5.0, "time (ms)");
}

Axis timeAxis(double length_ms) {
    return linearAxis(0.0, length_ms, niceStep(length_ms, kTimeTicks), "time (ms)");
}

Axis gainAxis() {
    return linearAxis(kLowestGain, kHighestGain, 0.5, "gain");
}

Axis envelopeAxis() {
    return linearAxis(kLowestEnvelope_db, kHighestEnvelope_db, 10.0, "gain (dB)");
}

Axis frequencyAxis() {
    Axis axis = sonivex_plotting::frequencyAxis(20.0, 20000.0);
    for (const double decade : {10.0, 100.0, 1000.0, 10000.0}) {
        for (int i = 1; i < 10; ++i) {
            const double value = decade * i;
            if (value > axis.low && value < axis.high) axis.minor_ticks.push_back(value);
        }
    }
    return axis;
}

Axis magnitudeAxis() {
    return linearAxis(kLowestMagnitude_db, kHighestMagnitude_db, 10.0, "gain (dB)");
}

Axis decayAxis() {
    return linearAxis(kLowestDecay_db, 0.0, 10.0, "energy (dB re louder ear)");
}

Axis octaveAxis() {
    std::vector<Tick> ticks;
    ticks.reserve(kOctaves_hz.size());
    for (const int centre_hz : kOctaves_hz) {
        ticks.push_back({static_cast<double>(centre_hz), octaveName(centre_hz)});
    }
    return logarithmicAxis(ticks.front().value / std::numbers::sqrt2,
                           ticks.back().value * std::numbers::sqrt2, ticks, "octave (Hz)");
}

Axis octaveLevelAxis() {
    return linearAxis(kLowestOctaveLevel_db, kHighestOctaveLevel_db, 10.0, "level (dB)");
}

Axis correlationAxis() {
    return linearAxis(0.0, 1.0, 0.2, "correlation");
}

}  // namespace sonivex_tool
