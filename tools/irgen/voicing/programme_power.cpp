#include "programme_power.h"

#include <algorithm>

#include "exact_math.h"
#include "fft.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kPoints = 32768;
constexpr double kAgreeingUpTo_hz = 150.0;
constexpr double kDifferingFrom_hz = 3000.0;
constexpr double kBassCoherence = 0.95;
constexpr double kTrebleCoherence = 0.35;

double realProduct(Complex a, Complex b) {
    return a.re * b.re + a.im * b.im;
}

// Mean over the ears of |h1|^2 + |h2|^2 + 2 rho Re(h1 h2*); rho = 1 gives |h1 + h2|^2.
std::vector<double> pairPower(const EarSignals& first, const EarSignals& second, Programme programme) {
    std::vector<double> power(kPoints / 2 + 1, 0.0);
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        const std::vector<Complex> h1 = realSpectrum(first[ear], kPoints);
        const std::vector<Complex> h2 = realSpectrum(second[ear], kPoints);
        for (std::size_t k = 0; k < power.size(); ++k) {
            const double frequency_hz = static_cast<double>(k) * kRate_hz / static_cast<double>(kPoints);
            const double rho = programme == Programme::kOwnChannel ? 1.0 : musicCoherence(frequency_hz);
            power[k] +=
                (squaredMagnitude(h1[k]) + squaredMagnitude(h2[k]) + 2.0 * rho * realProduct(h1[k], h2[k])) /
                static_cast<double>(kEars);
        }
    }
    return power;
}

// Sum of the powers at both ears, averaged over the loudspeakers.
std::vector<double> singlePower(const std::vector<EarSignals>& group) {
    std::vector<double> power(kPoints / 2 + 1, 0.0);
    for (const EarSignals& ears : group) {
        for (const std::vector<double>& ear : ears) {
            const std::vector<double> heard = powerSpectrum(ear, kPoints);
            for (std::size_t k = 0; k < power.size(); ++k)
                power[k] += heard[k] / static_cast<double>(group.size());
        }
    }
    return power;
}

}  // namespace

std::vector<double> programmePower(const std::vector<EarSignals>& group, Programme programme) {
    if (programme == Programme::kOneChannel) return singlePower(group);
    return pairPower(group[0], group[1], programme);
}

double musicCoherence(double frequency_hz) {
    const double limited_hz = std::clamp(frequency_hz, kAgreeingUpTo_hz, kDifferingFrom_hz);
    const double place =
        exactLog(limited_hz / kAgreeingUpTo_hz) / exactLog(kDifferingFrom_hz / kAgreeingUpTo_hz);
    return kBassCoherence + place * (kTrebleCoherence - kBassCoherence);
}

}  // namespace sonivex_irgen
