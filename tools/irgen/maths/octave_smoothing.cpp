#include "octave_smoothing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "exact_math.h"

namespace sonivex_irgen {

std::vector<double> smoothOverOctaves(const std::vector<double>& power, double half_width_octaves) {
    std::vector<double> sums(power.size() + 1, 0.0);
    for (std::size_t k = 0; k < power.size(); ++k) sums[k + 1] = sums[k] + power[k];

    const double ratio = exactExp(half_width_octaves * exactLog(2.0));
    std::vector<double> smoothed(power.size());
    for (std::size_t k = 0; k < power.size(); ++k) {
        const auto centre = static_cast<double>(k);
        const auto first = static_cast<std::size_t>(std::floor(centre / ratio + 0.5));
        const auto end =
            std::min(static_cast<std::size_t>(std::floor(centre * ratio + 0.5)) + 1, power.size());
        smoothed[k] = (sums[end] - sums[first]) / static_cast<double>(end - first);
    }
    return smoothed;
}

}  // namespace sonivex_irgen
