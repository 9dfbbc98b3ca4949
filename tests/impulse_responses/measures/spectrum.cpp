#include "spectrum.h"

#include <cmath>
#include <map>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace response_quality {
namespace {

// exp(-2 pi i k / size) for the first half of the circle. They are cached, as only a few sizes occur.
const Spectrum& turnsOf(std::size_t size) {
    static std::map<std::size_t, Spectrum> kept;
    Spectrum& turns = kept[size];
    while (turns.size() < size / 2) {
        const double part = static_cast<double>(turns.size()) / static_cast<double>(size);
        turns.push_back(std::polar(1.0, -2.0 * std::numbers::pi * part));
    }
    return turns;
}

}  // namespace

double energyOf(std::span<const double> signal) {
    double sum = 0.0;
    for (const double value : signal) sum += value * value;
    return sum;
}

std::size_t powerOfTwoFrom(std::size_t n) {
    std::size_t points = 1;
    while (points < n) points *= 2;
    return points;
}

void transform(Spectrum& values, int sign) {
    const std::size_t size = values.size();
    for (std::size_t i = 1, reversed = 0; i < size; ++i) {
        std::size_t bit = size / 2;
        for (; reversed & bit; bit /= 2) reversed ^= bit;
        reversed |= bit;
        if (i < reversed) std::swap(values[i], values[reversed]);
    }
    const Spectrum& forward = turnsOf(size);
    for (std::size_t span = 2; span <= size; span *= 2) {
        const std::size_t half = span / 2;
        const std::size_t stride = size / span;
        for (std::size_t start = 0; start < size; start += span) {
            for (std::size_t k = 0; k < half; ++k) {
                const std::complex<double> low = values[start + k];
                const std::complex<double> turn =
                    sign < 0 ? forward[k * stride] : std::conj(forward[k * stride]);
                const std::complex<double> high = values[start + half + k];
                const std::complex<double> turned{high.real() * turn.real() - high.imag() * turn.imag(),
                                                  high.real() * turn.imag() + high.imag() * turn.real()};
                values[start + k] = low + turned;
                values[start + half + k] = low - turned;
            }
        }
    }
}

Spectrum spectrumOf(const Signal& signal, std::size_t points) {
    if (signal.size() > points) throw std::invalid_argument("the signal is longer than its transform");
    Spectrum values(points);
    for (std::size_t n = 0; n < signal.size(); ++n) values[n] = signal[n];
    transform(values, -1);
    values.resize(points / 2 + 1);
    return values;
}

Signal powerOf(const Signal& signal, std::size_t points) {
    const Spectrum bins = spectrumOf(signal, points);
    Signal power(bins.size());
    for (std::size_t k = 0; k < bins.size(); ++k) power[k] = std::norm(bins[k]);
    return power;
}

double bandSum(const Signal& power, double rate_hz, double low_hz, double high_hz) {
    const double width_hz = rate_hz / static_cast<double>(2 * (power.size() - 1));
    double sum = 0.0;
    for (std::size_t k = 0; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        if (frequency_hz >= low_hz && frequency_hz < high_hz) sum += power[k];
    }
    return sum;
}

double octaveSum(const Signal& power, double rate_hz, double centre_hz) {
    return bandSum(power, rate_hz, centre_hz / std::numbers::sqrt2, centre_hz * std::numbers::sqrt2);
}

Signal convolve(const Signal& a, const Signal& b) {
    const std::size_t size = a.size() + b.size() - 1;
    const std::size_t points = powerOfTwoFrom(size);
    Spectrum first(points);
    Spectrum second(points);
    for (std::size_t n = 0; n < a.size(); ++n) first[n] = a[n];
    for (std::size_t n = 0; n < b.size(); ++n) second[n] = b[n];
    transform(first, -1);
    transform(second, -1);
    for (std::size_t k = 0; k < points; ++k) first[k] *= second[k];
    transform(first, 1);
    Signal result(size);
    for (std::size_t n = 0; n < size; ++n) result[n] = first[n].real() / static_cast<double>(points);
    return result;
}

Signal delayed(const Signal& signal, double delay_samples) {
    const auto room = static_cast<std::size_t>(std::ceil(delay_samples));
    const std::size_t points = powerOfTwoFrom(2 * (signal.size() + room));
    Spectrum bins = spectrumOf(signal, points);
    Spectrum values(points);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        const double turn = 2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(points);
        bins[k] *= std::polar(1.0, -turn * delay_samples);
        values[k] = bins[k];
        if (k > 0 && k < points / 2) values[points - k] = std::conj(bins[k]);
    }
    transform(values, 1);
    Signal result(signal.size() + room);
    for (std::size_t n = 0; n < result.size(); ++n)
        result[n] = values[n].real() / static_cast<double>(points);
    return result;
}

Signal oversample(const Signal& signal, std::size_t factor) {
    const std::size_t points = powerOfTwoFrom(signal.size());
    const Spectrum bins = spectrumOf(signal, points);
    Spectrum values(points * factor);
    for (std::size_t k = 0; k < points / 2; ++k) values[k] = bins[k] * (k == 0 ? 1.0 : 2.0);
    values[points / 2] = bins[points / 2];
    transform(values, 1);
    Signal result(signal.size() * factor);
    for (std::size_t n = 0; n < result.size(); ++n)
        result[n] = values[n].real() / static_cast<double>(points);
    return result;
}

}  // namespace response_quality
