#include "responses_measures.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

#include "fourier.h"

namespace sonivex_tool {
namespace {

constexpr double kArrivalPart = 0.1;
constexpr double kRoomFrom_hz = 300.0;  // the responses have no room in the bass
constexpr double kRoomFrom_s = 0.020;
constexpr double kStep_s = 0.005;
constexpr std::size_t kFewestSteps = 6;
constexpr double kLowest_hz = 20.0;
constexpr double kHighest_hz = 20000.0;
constexpr double kPointsPerOctave = 48.0;
constexpr double kAveragedOctaves = 1.0 / 12.0;
constexpr double kEnvelopeStep_s = 0.0005;
constexpr double kFloor_db = -200.0;

double decibels(double power) {
    return std::max(10.0 * std::log10(power), kFloor_db);
}

double peakOf(std::span<const double> gains) {
    double peak = 0.0;
    for (const double gain : gains) peak = std::max(peak, std::abs(gain));
    return peak;
}

// Second-order Butterworth high-pass, by the bilinear transform.
std::vector<double> highPass(std::span<const double> x, double cutoff_hz, int rate_hz) {
    const double k = std::tan(std::numbers::pi * cutoff_hz / rate_hz);
    const double scale = 1.0 / (1.0 + std::numbers::sqrt2 * k + k * k);
    const double a1 = 2.0 * (k * k - 1.0) * scale;
    const double a2 = (1.0 - std::numbers::sqrt2 * k + k * k) * scale;
    std::vector<double> y(x.size());
    double x1 = 0.0;
    double x2 = 0.0;
    double y1 = 0.0;
    double y2 = 0.0;
    for (std::size_t n = 0; n < x.size(); ++n) {
        y[n] = scale * (x[n] - 2.0 * x1 + x2) - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x[n];
        y2 = y1;
        y1 = y[n];
    }
    return y;
}

// Returns the slope of the least-squares line through y at 0, 1, 2, …
double slopeOf(std::span<const double> y) {
    const auto count = static_cast<double>(y.size());
    double xy = 0.0;
    double xx = 0.0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double x = static_cast<double>(i) - (count - 1.0) / 2.0;
        xy += x * y[i];
        xx += x * x;
    }
    return xy / xx;
}

std::optional<double> reverberation_s(std::span<const double> gains, std::size_t arrival, int rate_hz,
                                      double faded_part) {
    const std::vector<double> heard = highPass(gains, kRoomFrom_hz, rate_hz);
    const auto end = static_cast<std::size_t>((1.0 - faded_part) * static_cast<double>(gains.size()));
    const auto step = static_cast<std::size_t>(std::lround(kStep_s * rate_hz));
    std::vector<double> levels_db;
    for (std::size_t n = arrival + static_cast<std::size_t>(std::lround(kRoomFrom_s * rate_hz));
         n + step <= end; n += step) {
        double energy = 0.0;
        for (std::size_t i = n; i < n + step; ++i) energy += heard[i] * heard[i];
        if (energy == 0.0) break;
        levels_db.push_back(decibels(energy));
    }
    if (levels_db.size() < kFewestSteps) return std::nullopt;
    const double slope_db_per_second = slopeOf(levels_db) * rate_hz / static_cast<double>(step);
    if (slope_db_per_second >= 0.0) return std::nullopt;
    return -60.0 / slope_db_per_second;
}

}  // namespace

std::size_t arrivalSample(std::span<const double> gains) {
    const double threshold = kArrivalPart * peakOf(gains);
    const auto arrival =
        std::find_if(gains.begin(), gains.end(), [&](double gain) { return std::abs(gain) >= threshold; });
    return arrival == gains.end() ? 0 : static_cast<std::size_t>(arrival - gains.begin());
}

double energyOf(std::span<const double> gains) {
    double energy = 0.0;
    for (const double gain : gains) energy += gain * gain;
    return energy;
}

ResponseMeasures measureResponse(std::span<const double> gains, int rate_hz, double faded_part) {
    ResponseMeasures measures;
    measures.peak = peakOf(gains);
    if (measures.peak == 0.0) return measures;
    measures.energy_db = 10.0 * std::log10(energyOf(gains));
    measures.arrival_samples = arrivalSample(gains);
    measures.arrival_ms = static_cast<double>(measures.arrival_samples) / rate_hz * 1000.0;
    measures.reverberation_s = reverberation_s(gains, measures.arrival_samples, rate_hz, faded_part);
    return measures;
}

std::vector<double> energyDecay_db(std::span<const double> gains, double reference) {
    std::vector<double> decay(gains.size());
    double sum = 0.0;
    for (std::size_t n = gains.size(); n-- > 0;) {
        sum += gains[n] * gains[n];
        decay[n] = sum;
    }
    const auto end = std::find(decay.begin(), decay.end(), 0.0);
    decay.erase(end, decay.end());
    for (double& value : decay) value = decibels(value / reference);
    return decay;
}

std::vector<EnvelopePoint> envelope(std::span<const double> gains, int rate_hz) {
    const auto step =
        std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(kEnvelopeStep_s * rate_hz)));
    std::vector<EnvelopePoint> points;
    for (std::size_t from = 0; from < gains.size(); from += step) {
        const auto part = gains.subspan(from, std::min(step, gains.size() - from));
        const double middle = static_cast<double>(from) + static_cast<double>(part.size()) / 2.0;
        const double peak = peakOf(part);
        points.push_back({middle / rate_hz * 1000.0, decibels(peak * peak)});
    }
    return points;
}

std::vector<SpectrumPoint> magnitude(std::span<const double> gains, int rate_hz) {
    // Twice the length puts the bins close enough together to average over them.
    std::vector<std::complex<double>> bins(std::bit_ceil(2 * std::max<std::size_t>(gains.size(), 4096)));
    std::copy(gains.begin(), gains.end(), bins.begin());
    Fourier(bins.size()).transform(bins);
    const double bins_per_hz = static_cast<double>(bins.size()) / rate_hz;
    const double half_band = std::exp2(kAveragedOctaves / 2.0);
    std::vector<SpectrumPoint> points;
    for (int i = 0;; ++i) {
        const double frequency_hz = kLowest_hz * std::exp2(i / kPointsPerOctave);
        if (frequency_hz > std::min(kHighest_hz, rate_hz / 2.0 / half_band)) break;
        const auto first = static_cast<std::size_t>(std::lround(frequency_hz / half_band * bins_per_hz));
        const auto last = static_cast<std::size_t>(std::lround(frequency_hz * half_band * bins_per_hz));
        double power = 0.0;
        for (std::size_t k = first; k <= last; ++k) power += std::norm(bins[k]);
        points.push_back({frequency_hz, decibels(power / static_cast<double>(last - first + 1))});
    }
    return points;
}

}  // namespace sonivex_tool
