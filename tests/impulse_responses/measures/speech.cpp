#include "speech.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace response_quality {
namespace {

// Levels in dB of the third octaves from 63 Hz to 16 kHz, whose exact centres are 10^1.8 to 10^4.2 Hz.
constexpr int kFirstBand = 18;
constexpr std::array kLevels_db{38.6, 43.5, 54.4, 57.7, 56.8, 60.2, 60.3, 59.0, 62.1, 62.1, 60.5, 56.8, 53.7,
                                53.0, 52.0, 48.7, 48.1, 46.8, 45.6, 44.5, 44.3, 43.7, 43.4, 41.3, 40.7};

}  // namespace

double speechDensity(double frequency_hz) {
    if (frequency_hz <= 0.0) return 0.0;
    const double band = 10.0 * std::log10(frequency_hz) - kFirstBand;
    constexpr std::size_t kLast = kLevels_db.size() - 1;
    if (band < 0.0 || band > static_cast<double>(kLast)) return 0.0;
    const auto below = static_cast<std::size_t>(band);
    const std::size_t above = below < kLast ? below + 1 : kLast;
    const double part = band - static_cast<double>(below);
    const double level_db = kLevels_db[below] + part * (kLevels_db[above] - kLevels_db[below]);
    // The width of a third octave is proportional to its centre.
    return std::pow(10.0, level_db / 10.0) / frequency_hz;
}

}  // namespace response_quality
