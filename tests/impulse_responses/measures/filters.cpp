#include "filters.h"

#include <array>
#include <cmath>
#include <complex>
#include <numbers>

namespace response_quality {
namespace {

// Digital second-order section. The bilinear transform makes it from the analogue section
//   (b0 + b1 s + b2 s^2) / (1 + s/q + s^2), s in units of the corner frequency.
struct Section {
    std::array<double, 3> b{};
    std::array<double, 3> a{};
};

Section bilinear(const std::array<double, 3>& numerator, double q, double corner_hz, double rate_hz) {
    const double c = 1.0 / std::tan(std::numbers::pi * corner_hz / rate_hz);  // s = c (1 - z) / (1 + z)
    const auto digital = [c](double p0, double p1, double p2) {
        return std::array<double, 3>{p0 + p1 * c + p2 * c * c, 2.0 * (p0 - p2 * c * c),
                                     p0 - p1 * c + p2 * c * c};
    };
    Section section{digital(numerator[0], numerator[1], numerator[2]), digital(1.0, 1.0 / q, 1.0)};
    const double scale = section.a[0];
    for (double& value : section.b) value /= scale;
    for (double& value : section.a) value /= scale;
    return section;
}

void applySection(const Section& section, Signal& signal) {
    double x1 = 0.0;
    double x2 = 0.0;
    double y1 = 0.0;
    double y2 = 0.0;
    for (double& value : signal) {
        const double x = value;
        value =
            section.b[0] * x + section.b[1] * x1 + section.b[2] * x2 - section.a[1] * y1 - section.a[2] * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = value;
    }
}

double powerAt(const Section& section, double frequency_hz, double rate_hz) {
    const std::complex<double> z = std::polar(1.0, -2.0 * std::numbers::pi * frequency_hz / rate_hz);
    return std::norm((section.b[0] + z * (section.b[1] + z * section.b[2])) /
                     (section.a[0] + z * (section.a[1] + z * section.a[2])));
}

constexpr std::array<double, 3> kLowPass{1.0, 0.0, 0.0};
constexpr std::array<double, 3> kHighPass{0.0, 0.0, 1.0};

// Fourth-order Butterworth filter of two sections, whose poles are at 22.5 and 67.5 degrees on the circle.
void applyButterworth(const std::array<double, 3>& numerator, double corner_hz, double rate_hz,
                      Signal& signal) {
    for (const double angle_deg : {22.5, 67.5}) {
        const double q = 0.5 / std::cos(angle_deg * std::numbers::pi / 180.0);
        applySection(bilinear(numerator, q, corner_hz, rate_hz), signal);
    }
}

}  // namespace

Signal butterworthHighPass(const Signal& signal, double corner_hz, double rate_hz) {
    Signal result = signal;
    applyButterworth(kHighPass, corner_hz, rate_hz, result);
    return result;
}

Signal octaveBand(const Signal& signal, double centre_hz, double rate_hz) {
    Signal result = signal;
    applyButterworth(kHighPass, centre_hz / std::numbers::sqrt2, rate_hz, result);
    applyButterworth(kLowPass, centre_hz * std::numbers::sqrt2, rate_hz, result);
    return result;
}

double kCurve(double frequency_hz, double rate_hz) {
    // Analogue prototypes of the tabulated coefficients: a shelf of 4 dB, which models the head, and a
    // high-pass.
    constexpr double kShelf_hz = 1681.974450955533;
    constexpr double kShelfQ = 0.7071752369554196;
    constexpr double kShelf_db = 3.999843853973347;
    constexpr double kShelfMiddleExponent = 0.4996667741545416;
    constexpr double kBassCut_hz = 38.13547087602444;
    constexpr double kBassCutQ = 0.5003270373238773;
    const double high = std::pow(10.0, kShelf_db / 20.0);
    const double middle = std::pow(high, kShelfMiddleExponent);
    const Section shelf = bilinear({1.0, middle / kShelfQ, high}, kShelfQ, kShelf_hz, rate_hz);
    // ITU-R BS.1770 leaves the high-pass unscaled: its numerator is 1, -2, 1.
    Section bass_cut = bilinear(kHighPass, kBassCutQ, kBassCut_hz, rate_hz);
    bass_cut.b = {1.0, -2.0, 1.0};
    return powerAt(shelf, frequency_hz, rate_hz) * powerAt(bass_cut, frequency_hz, rate_hz);
}

}  // namespace response_quality
