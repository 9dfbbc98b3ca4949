#include "rigid_sphere.h"

#include <cmath>
#include <numbers>

namespace sonivex_tool {
namespace {

using Complex = std::complex<double>;

constexpr double kNegligible = 1e-12;
constexpr int kMaxTerms = 100;  // 50 suffice at 20 kHz

double radians(double deg) {
    return deg * std::numbers::pi / 180.0;
}

}  // namespace

std::complex<double> spherePressure(double frequency_hz, double incidence_deg) {
    const double x = 2.0 * std::numbers::pi * frequency_hz * kHeadRadius_m / kSpeedOfSound_m_s;  // ka
    const double cosine = std::cos(radians(incidence_deg));
    // h and the next h, P and the next P, for m = 0; then upward recurrences.
    Complex hankel = Complex(0.0, -1.0) * std::polar(1.0, x) / x;
    Complex next_hankel = -std::polar(1.0, x) * Complex(1.0, 1.0 / x) / x;
    double legendre = 1.0;
    double next_legendre = cosine;
    Complex turn(0.0, 1.0);  // i (-i)^m
    Complex sum;
    for (int m = 0; m < kMaxTerms; ++m) {
        const Complex slope = static_cast<double>(m) / x * hankel - next_hankel;
        const Complex weight = turn * (2.0 * m + 1.0) / (x * x * slope);
        sum += weight * legendre;
        if (m > x && std::abs(weight) < kNegligible) break;
        const Complex after_hankel = (2.0 * m + 3.0) / x * next_hankel - hankel;
        hankel = next_hankel;
        next_hankel = after_hankel;
        const double after_legendre =
            ((2.0 * m + 3.0) * cosine * next_legendre - (m + 1.0) * legendre) / (m + 2.0);
        legendre = next_legendre;
        next_legendre = after_legendre;
        turn *= Complex(0.0, -1.0);
    }
    return std::conj(sum);  // the series has the time factor exp(-i 2 pi f t)
}

SphereEars sphereEars(double frequency_hz, double lateral_deg) {
    const Complex ratio =
        spherePressure(frequency_hz, 90.0 - lateral_deg) / spherePressure(frequency_hz, 90.0 + lateral_deg);
    return {std::arg(ratio) / (2.0 * std::numbers::pi * frequency_hz) * 1e6,
            20.0 * std::log10(std::abs(ratio))};
}

}  // namespace sonivex_tool
