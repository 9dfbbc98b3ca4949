#include "interaural_delay.h"

#include <algorithm>

#include "exact_math.h"
#include "fft.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kOversampling = 8;
constexpr double kOnsetLevel = 0.1;  // fraction of the peak
constexpr double kHorizontal_z = 0.05;
constexpr std::size_t kEnoughDirections = 8;
constexpr double kSmallestRadius_m = 0.07;
constexpr double kLargestRadius_m = 0.11;

std::vector<double> oversampled(const std::vector<double>& response) {
    std::vector<Complex> bins = realSpectrum(response, 2 * nextPowerOfTwo(response.size()));
    const std::size_t half = bins.size() - 1;
    bins[half] = 0.5 * bins[half];  // the old Nyquist bin gets a mirror image
    bins.resize(half * kOversampling + 1);
    return realSignal(bins);
}

double magnitude(double value) {
    return value < 0.0 ? -value : value;
}

}  // namespace

double woodworthDelay_s(double radius_m, const Vector3& direction) {
    const double angle_rad = exactAsin(direction.y);
    return radius_m / kSpeedOfSound_m_s * (angle_rad + exactSin(angle_rad));
}

double onset_samples(const std::vector<double>& response) {
    const std::vector<double> fine = oversampled(response);
    const std::size_t length = response.size() * kOversampling;
    double peak = 0.0;
    for (std::size_t n = 0; n < length; ++n) peak = std::max(peak, magnitude(fine[n]));
    std::size_t first = 0;
    while (first + 1 < length && magnitude(fine[first]) < kOnsetLevel * peak) ++first;
    return static_cast<double>(first) / static_cast<double>(kOversampling);
}

double fitHeadRadius_m(const HeadMeasurements& head) {
    std::vector<const HeadMeasurement*> fitted;
    for (const HeadMeasurement& measured : head.directions) {
        if (magnitude(measured.direction.z) <= kHorizontal_z) fitted.push_back(&measured);
    }
    if (fitted.size() < kEnoughDirections) {
        fitted.clear();
        for (const HeadMeasurement& measured : head.directions) fitted.push_back(&measured);
    }
    double product = 0.0;
    double square = 0.0;
    for (const HeadMeasurement* measured : fitted) {
        const double right = onset_samples(measured->ears[1]) + measured->delays_samples[1];
        const double left = onset_samples(measured->ears[0]) + measured->delays_samples[0];
        const double per_metre_s = woodworthDelay_s(1.0, measured->direction);
        product += per_metre_s * (right - left) / head.rate_hz;
        square += per_metre_s * per_metre_s;
    }
    if (!(square > 0.0)) return kSmallestRadius_m;
    return std::clamp(product / square, kSmallestRadius_m, kLargestRadius_m);
}

}  // namespace sonivex_irgen
