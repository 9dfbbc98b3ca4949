#include "speech_spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "exact_math.h"

namespace sonivex_irgen {
namespace {

// Levels of the third octaves around 1000 * 2^(n/3) Hz, n from -12 to 12.
constexpr int kLowestBand = -12;
constexpr std::array<double, 25> kBandLevels_db{38.6, 43.5, 54.4, 57.7, 56.8, 60.2, 60.3, 59.0, 62.1,
                                                62.1, 60.5, 56.8, 53.7, 53.0, 52.0, 48.7, 48.1, 46.8,
                                                45.6, 44.5, 44.3, 43.7, 43.4, 41.3, 40.7};

}  // namespace

double speechDensity_db(double frequency_hz) {
    constexpr auto kLast = static_cast<double>(kBandLevels_db.size() - 1);
    const double octaves = exactLog2(std::max(frequency_hz, 1.0) / 1000.0);
    const double place = std::clamp(3.0 * octaves - kLowestBand, 0.0, kLast);
    const auto below = std::min(static_cast<std::size_t>(std::floor(place)), kBandLevels_db.size() - 2);
    const double fraction = place - static_cast<double>(below);
    const double band_db =
        kBandLevels_db[below] + fraction * (kBandLevels_db[below + 1] - kBandLevels_db[below]);
    // A third octave is as wide as its centre frequency is high.
    return band_db - powerToDb(exactExp((place + kLowestBand) / 3.0 * exactLog(2.0)));
}

}  // namespace sonivex_irgen
