#include "low_frequency_delay.h"

#include <cstddef>

#include "exact_math.h"
#include "fft.h"
#include "speech_spectrum.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kPoints = 4096;
constexpr double kHighest_hz = 1500.0;
constexpr int kLargestLag = 384;  // 1 ms
constexpr double kLag_s = 1.0 / (8.0 * kRate_hz);

Complex turn(double angle_rad) {
    return {exactCos(angle_rad), exactSin(angle_rad)};
}

}  // namespace

double lowFrequencyDelay_s(const EarPair& responses, double rate_hz, double right_later_s) {
    const std::vector<Complex> left = realSpectrum(responses[0], kPoints);
    const std::vector<Complex> right = realSpectrum(responses[1], kPoints);
    const double width_hz = rate_hz / static_cast<double>(kPoints);
    std::vector<double> correlation(2 * kLargestLag + 1, 0.0);
    for (std::size_t k = 1; static_cast<double>(k) * width_hz <= kHighest_hz; ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        const double angular_hz = 2.0 * kPi * frequency_hz;
        const Complex cross = Complex{left[k].re, -left[k].im} * right[k];
        const Complex step = turn(angular_hz * kLag_s);
        Complex term = dbToPower(speechDensity_db(frequency_hz)) *
                       (cross * turn(-angular_hz * (right_later_s + kLargestLag * kLag_s)));
        for (double& value : correlation) {
            value += term.re;
            term = term * step;
        }
    }
    std::size_t best = kLargestLag;  // no delay, unless another lag is better
    for (std::size_t lag = 0; lag < correlation.size(); ++lag) {
        if (correlation[lag] > correlation[best]) best = lag;
    }
    return (static_cast<double>(best) - kLargestLag) * kLag_s;
}

}  // namespace sonivex_irgen
