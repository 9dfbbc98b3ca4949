#include "test_signals.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "support/signals/signals.h"

namespace response_quality {

Signal noise(std::size_t size, std::uint64_t seed) {
    const std::vector<float> floats = test::noiseFloats(seed, size);
    return {floats.begin(), floats.end()};
}

Signal impulse(std::size_t size, std::size_t at) {
    Signal signal(size, 0.0);
    signal[at] = 1.0;
    return signal;
}

Signal sum(const Signal& a, const Signal& b, double factor) {
    Signal result = a;
    for (std::size_t n = 0; n < result.size(); ++n) result[n] += factor * b[n];
    return result;
}

Signal sine(std::size_t periods) {
    Signal signal(kOctavePoints);
    for (std::size_t n = 0; n < signal.size(); ++n) {
        signal[n] = std::sin(2.0 * std::numbers::pi * static_cast<double>(periods * n) / kOctavePoints);
    }
    return signal;
}

Ears syntheticRoom(double reverberation_time_s) {
    Ears ears{noise(13000, kSeed), noise(13000, kSeed + 1)};
    for (Signal& ear : ears) {
        for (std::size_t n = 0; n < ear.size(); ++n) {
            const double t_s = (static_cast<double>(n) - 40.0) / kRate_hz;
            ear[n] *= t_s < 0.003 ? 0.0 : std::pow(10.0, -3.0 * t_s / reverberation_time_s);
        }
        const double factor = std::sqrt(std::pow(10.0, -0.8) / energyOf(ear));
        for (double& value : ear) value *= factor;
        ear[40] = 1.0;
    }
    return ears;
}

}  // namespace response_quality
