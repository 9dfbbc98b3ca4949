#include "cross_correlation.h"

namespace response_quality {

Signal correlationOf(const Spectrum& cross, std::size_t factor, std::size_t range) {
    const std::size_t points = 2 * (cross.size() - 1) * factor;
    Spectrum values(points);
    for (std::size_t k = 1; k + 1 < cross.size(); ++k) {
        values[k] = cross[k];
        values[points - k] = std::conj(cross[k]);
    }
    transform(values, 1);
    Signal correlation(2 * range * factor + 1);
    for (std::size_t i = 0; i < correlation.size(); ++i) {
        correlation[i] = values[(points + i - range * factor) % points].real();
    }
    return correlation;
}

}  // namespace response_quality
