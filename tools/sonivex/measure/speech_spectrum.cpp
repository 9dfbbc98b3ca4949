#include "speech_spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace sonivex_tool {
namespace {

// Levels in dB of the third octaves around 10^1.8, 10^1.9, …, 10^4.2 Hz: nominally 63 Hz to 16 kHz.
// D. Byrne et al., "An international comparison of long-term average speech spectra", JASA 96 (1994).
constexpr int kFirstBand = 18;
constexpr std::array kLevels_db{38.6, 43.5, 54.4, 57.7, 56.8, 60.2, 60.3, 59.0, 62.1, 62.1, 60.5, 56.8, 53.7,
                                53.0, 52.0, 48.7, 48.1, 46.8, 45.6, 44.5, 44.3, 43.7, 43.4, 41.3, 40.7};

}  // namespace

double speechDensity(double frequency_hz) {
    if (frequency_hz <= 0.0) return 0.0;
    constexpr std::size_t kLast = kLevels_db.size() - 1;
    const double band = 10.0 * std::log10(frequency_hz) - kFirstBand;
    if (band < 0.0 || band > static_cast<double>(kLast)) return 0.0;
    const std::size_t below = std::min(static_cast<std::size_t>(band), kLast - 1);
    const double level_db =
        std::lerp(kLevels_db.at(below), kLevels_db.at(below + 1), band - static_cast<double>(below));
    // The width of a third octave is proportional to its centre.
    return std::pow(10.0, level_db / 10.0) / frequency_hz;
}

}  // namespace sonivex_tool
