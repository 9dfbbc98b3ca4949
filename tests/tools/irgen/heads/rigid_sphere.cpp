#include "rigid_sphere.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <map>
#include <numbers>
#include <vector>

namespace irgen_test {
namespace {

using sonivex_irgen::HeadMeasurement;
using sonivex_irgen::HeadMeasurements;
using sonivex_irgen::Vector3;
using Complex = std::complex<double>;

constexpr std::size_t kSamples = 256;
constexpr double kSpeedOfSound_m_s = 343.0;
constexpr double kCentre_samples = 64.0;  // when the wave would pass the sphere's centre
constexpr double kDegree = std::numbers::pi / 180.0;

// Factors of the Legendre polynomials in the series: (-i)^(m-1) (2m+1) / (mu^2 h'_m(mu)), m = 0, 1, 2, ...
//   h_m    spherical Hankel function of the first kind
//   h'_m   h_(m-1) - (m+1) / mu h_m
std::vector<Complex> seriesFactors(double mu) {
    const auto terms = static_cast<int>(1.3 * mu) + 12;
    const Complex i(0.0, 1.0);
    Complex before = std::exp(i * mu) / mu;     // h_(-1)
    Complex now = std::exp(i * mu) / (i * mu);  // h_0
    Complex turn = i;                           // (-i)^(m-1)
    std::vector<Complex> factors;
    for (int m = 0; m <= terms; ++m) {
        const Complex slope = before - (m + 1.0) / mu * now;
        factors.push_back(turn * (2.0 * m + 1.0) / (mu * mu * slope));
        const Complex next = (2.0 * m + 1.0) / mu * now - before;
        before = now;
        now = next;
        turn *= -i;
    }
    return factors;
}

// Sum of the series at one angle between source and ear. The series takes time as exp(-i omega t); the
// conjugate turns that into the sign of the usual transform.
Complex pressure(const std::vector<Complex>& factors, double cosine) {
    double before = 0.0;
    double now = 1.0;  // P_0
    Complex sum = 0.0;
    for (std::size_t m = 0; m < factors.size(); ++m) {
        sum += factors[m] * now;
        const auto order = static_cast<double>(m);
        const double next = ((2.0 * order + 1.0) * cosine * now - order * before) / (order + 1.0);
        before = now;
        now = next;
    }
    return std::conj(sum);
}

// Impulse response from the spectrum, by its definition. A half cosine lets the top of the spectrum fade, so
// that the response does not ring.
std::vector<double> impulseResponse(const std::vector<Complex>& spectrum) {
    const std::size_t half = spectrum.size() - 1;
    std::vector<double> response(2 * half, 0.0);
    for (std::size_t k = 0; k < half; ++k) {
        const double place = static_cast<double>(k) / static_cast<double>(half);
        const double fade = place < 0.8 ? 1.0 : 0.5 + 0.5 * std::cos(std::numbers::pi * (place - 0.8) / 0.2);
        const double weight = (k == 0 ? 1.0 : 2.0) * fade / static_cast<double>(response.size());
        for (std::size_t n = 0; n < response.size(); ++n) {
            const double angle =
                std::numbers::pi * static_cast<double>((k * n) % (2 * half)) / static_cast<double>(half);
            response[n] += weight * (spectrum[k] * std::polar(1.0, angle)).real();
        }
    }
    return response;
}

// Responses by the cosine of the angle between source and ear; mirrored directions share one.
class SphereResponses {
  public:
    explicit SphereResponses(const RigidSphere& sphere) {
        for (std::size_t k = 1; k <= kSamples / 2; ++k) {
            const double omega = 2.0 * std::numbers::pi * static_cast<double>(k) * sphere.rate_hz / kSamples;
            factors_.push_back(seriesFactors(omega * sphere.radius_m / kSpeedOfSound_m_s));
        }
    }

    const std::vector<double>& at(double cosine) {
        std::vector<double>& response = responses_[std::lround(cosine * 1e6)];
        if (response.empty()) {
            std::vector<Complex> spectrum{1.0};
            for (std::size_t k = 1; k <= kSamples / 2; ++k) {
                const double angle =
                    2.0 * std::numbers::pi * static_cast<double>(k) * kCentre_samples / kSamples;
                spectrum.push_back(pressure(factors_[k - 1], cosine) * std::polar(1.0, -angle));
            }
            response = impulseResponse(spectrum);
        }
        return response;
    }

  private:
    std::vector<std::vector<Complex>> factors_;  // for the bins from 1 up
    std::map<long, std::vector<double>> responses_;
};

}  // namespace

HeadMeasurements rigidSphere(const RigidSphere& sphere) {
    SphereResponses responses(sphere);
    const Vector3 ears[] = {
        {std::cos(sphere.ear_azimuth_deg * kDegree), std::sin(sphere.ear_azimuth_deg * kDegree), 0.0},
        {std::cos(sphere.ear_azimuth_deg * kDegree), -std::sin(sphere.ear_azimuth_deg * kDegree), 0.0}};
    HeadMeasurements head;
    head.rate_hz = sphere.rate_hz;
    for (int elevation = -45; elevation <= 90; elevation += sphere.elevation_step_deg) {
        for (int azimuth = 0; azimuth < 360; azimuth += sphere.azimuth_step_deg) {
            HeadMeasurement& measured = head.directions.emplace_back();
            measured.direction = {std::cos(elevation * kDegree) * std::cos(azimuth * kDegree),
                                  std::cos(elevation * kDegree) * std::sin(azimuth * kDegree),
                                  std::sin(elevation * kDegree)};
            for (std::size_t ear = 0; ear < 2; ++ear) {
                measured.ears[ear] = responses.at(dot(measured.direction, ears[ear]));
            }
            if (elevation == 90) break;  // one direction is enough there
        }
    }
    return head;
}

}  // namespace irgen_test
