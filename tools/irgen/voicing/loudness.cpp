#include "loudness.h"

#include <cstddef>

#include "biquad.h"
#include "constants.h"
#include "exact_math.h"

namespace sonivex_irgen {
namespace {

// The two filters of ITU-R BS.1770 at 48 kHz: the shelf, which models the head, and the high-pass.
constexpr Biquad kHeadShelf{1.53512485958697, -2.69169618940638, 1.19839281085285, -1.69065929318241,
                            0.73248077421585};
constexpr Biquad kBassCut{1.0, -2.0, 1.0, -1.99004745483398, 0.99007225036621};

constexpr double kLowest_hz = 20.0;
constexpr double kHighest_hz = 20000.0;

}  // namespace

double kWeighting(double frequency_hz) {
    return powerResponse(kHeadShelf, frequency_hz, kRate_hz) *
           powerResponse(kBassCut, frequency_hz, kRate_hz);
}

double pinkLoudness_db(const std::vector<double>& power) {
    const double bin_width_hz = kRate_hz / static_cast<double>(2 * (power.size() - 1));
    double sum = 0.0;
    double total = 0.0;
    for (std::size_t k = 1; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * bin_width_hz;
        if (frequency_hz < kLowest_hz || frequency_hz > kHighest_hz) continue;
        const double weight = kWeighting(frequency_hz) / frequency_hz;
        sum += weight * power[k];
        total += weight;
    }
    return powerToDb(sum / total);
}

}  // namespace sonivex_irgen
