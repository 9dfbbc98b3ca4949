#include "damages.h"

#include <algorithm>
#include <cmath>

#include "diffuseness.h"
#include "filters.h"
#include "interaural.h"

namespace response_quality {

Responses oneSetOfEachKind() {
    Responses all = compiledResponses();
    return {{all.sets[0], all.sets[1], all.sets[4], all.sets[8]}, all.audio_stage};
}

Ears& left(Responses& responses, std::size_t set) {
    return responses.sets[set].sources[0].ears;
}

Ears& centre(Responses& responses, std::size_t set) {
    return responses.sets[set].sources[2].ears;
}

void scale(Signal& signal, double factor) {
    for (double& value : signal) value *= factor;
}

void shift(Signal& signal, std::ptrdiff_t samples) {
    if (samples > 0) {
        std::rotate(signal.rbegin(), signal.rbegin() + samples, signal.rend());
    } else {
        std::rotate(signal.begin(), signal.begin() - samples, signal.end());
    }
}

void scaleFrom(Ears& ears, double from_s, double factor) {
    for (Signal& ear : ears) {
        for (std::size_t n = onset(ear) + static_cast<std::size_t>(from_s * kRate_hz); n < ear.size(); ++n) {
            ear[n] *= factor;
        }
    }
}

void scaleOctaveOfRoom(Ears& ears, double octave_hz, double factor) {
    for (Signal& ear : ears) {
        const std::size_t first = onset(ear) + static_cast<std::size_t>(0.0026 * kRate_hz);
        const Signal band = octaveBand(tailOf(ear, first), octave_hz, kRate_hz);
        for (std::size_t n = first; n < ear.size(); ++n) ear[n] += (factor - 1.0) * band[n];
    }
}

void dull(Signal& signal) {
    double last = 0.0;
    for (double& value : signal) {
        last += 0.3 * (value - last);
        value = last;
    }
}

void decayFaster(Ears& ears, double rate_per_s) {
    for (Signal& ear : ears) {
        for (std::size_t n = 0; n < ear.size(); ++n) {
            ear[n] *= std::exp(-rate_per_s * static_cast<double>(n) / kRate_hz);
        }
    }
}

}  // namespace response_quality
