#include "biquad.h"

#include <cmath>

#include "exact_math.h"
#include "fft.h"

namespace sonivex_irgen {
namespace {

// Intermediate values of the cookbook: w0 is the angular frequency, alpha sets the bandwidth.
struct Terms {
    double cos_w0;
    double alpha;
};

Terms termsOf(const FilterPoint& at) {
    const double w0 = 2.0 * kPi * at.frequency_hz / at.rate_hz;
    return {exactCos(w0), exactSin(w0) / (2.0 * at.q)};
}

// A of the cookbook: the square root of the amplitude ratio.
double shelfAmplitude(double gain_db) {
    return dbToAmplitude(0.5 * gain_db);
}

Biquad normalised(double b0, double b1, double b2, double a0, double a1, double a2) {
    return {b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
}

}  // namespace

Biquad highPass(const FilterPoint& at) {
    const auto [cos_w0, alpha] = termsOf(at);
    return normalised(0.5 * (1.0 + cos_w0), -(1.0 + cos_w0), 0.5 * (1.0 + cos_w0), 1.0 + alpha, -2.0 * cos_w0,
                      1.0 - alpha);
}

Biquad peak(const FilterPoint& at, double gain_db) {
    const auto [cos_w0, alpha] = termsOf(at);
    const double a = shelfAmplitude(gain_db);
    return normalised(1.0 + alpha * a, -2.0 * cos_w0, 1.0 - alpha * a, 1.0 + alpha / a, -2.0 * cos_w0,
                      1.0 - alpha / a);
}

Biquad lowShelf(const FilterPoint& at, double gain_db) {
    const auto [cos_w0, alpha] = termsOf(at);
    const double a = shelfAmplitude(gain_db);
    const double slope = 2.0 * std::sqrt(a) * alpha;
    return normalised(a * ((a + 1.0) - (a - 1.0) * cos_w0 + slope),
                      2.0 * a * ((a - 1.0) - (a + 1.0) * cos_w0),
                      a * ((a + 1.0) - (a - 1.0) * cos_w0 - slope), (a + 1.0) + (a - 1.0) * cos_w0 + slope,
                      -2.0 * ((a - 1.0) + (a + 1.0) * cos_w0), (a + 1.0) + (a - 1.0) * cos_w0 - slope);
}

Biquad highShelf(const FilterPoint& at, double gain_db) {
    const auto [cos_w0, alpha] = termsOf(at);
    const double a = shelfAmplitude(gain_db);
    const double slope = 2.0 * std::sqrt(a) * alpha;
    return normalised(a * ((a + 1.0) + (a - 1.0) * cos_w0 + slope),
                      -2.0 * a * ((a - 1.0) + (a + 1.0) * cos_w0),
                      a * ((a + 1.0) + (a - 1.0) * cos_w0 - slope), (a + 1.0) - (a - 1.0) * cos_w0 + slope,
                      2.0 * ((a - 1.0) - (a + 1.0) * cos_w0), (a + 1.0) - (a - 1.0) * cos_w0 - slope);
}

void applyFilter(const Biquad& filter, std::vector<double>& signal) {
    double x1 = 0.0;
    double x2 = 0.0;
    double y1 = 0.0;
    double y2 = 0.0;
    for (double& sample : signal) {
        const double x = sample;
        const double y = filter.b0 * x + filter.b1 * x1 + filter.b2 * x2 - filter.a1 * y1 - filter.a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        sample = y;
    }
}

double powerResponse(const Biquad& filter, double frequency_hz, double rate_hz) {
    const double w = 2.0 * kPi * frequency_hz / rate_hz;
    const Complex z1{exactCos(w), -exactSin(w)};
    const Complex z2 = z1 * z1;
    const Complex top = Complex{filter.b0, 0.0} + filter.b1 * z1 + filter.b2 * z2;
    const Complex bottom = Complex{1.0, 0.0} + filter.a1 * z1 + filter.a2 * z2;
    return squaredMagnitude(top) / squaredMagnitude(bottom);
}

}  // namespace sonivex_irgen
