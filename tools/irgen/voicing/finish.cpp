#include "finish.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "biquad.h"
#include "exact_math.h"

namespace sonivex_irgen {
namespace {

constexpr double kBassShelf_hz = 110.0;
constexpr std::size_t kPlainlyRounded_samples = 256;
constexpr double kHalfUnit = 0.5;

void fadeEnd(double part, std::vector<double>& response) {
    const auto length = static_cast<double>(response.size());
    const double start = length * (1.0 - part);
    for (std::size_t n = 0; n < response.size(); ++n) {
        response[n] *= halfCosineFade((static_cast<double>(n) - start) / (length - start));
    }
}

// Samples up to the last one that is half a unit or more. The rest would be silence with a stray unit here
// and there, which costs the effect as much as sound.
std::size_t soundingLength(const std::vector<double>& response, double scale) {
    std::size_t length = response.size();
    while (length > 0 && std::abs(response[length - 1] * scale) < kHalfUnit) --length;
    return length;
}

void removeSum(std::vector<double>& response) {
    double sum = 0.0;
    for (const double sample : response) sum += sample;
    const std::size_t start = response.size() / 4;
    const auto width = static_cast<double>(response.size() - start);
    std::vector<double> hann(response.size(), 0.0);
    double hann_sum = 0.0;
    for (std::size_t n = start; n < response.size(); ++n) {
        hann[n] = 0.5 - 0.5 * exactCos(2.0 * kPi * static_cast<double>(n - start) / width);
        hann_sum += hann[n];
    }
    for (std::size_t n = start; n < response.size(); ++n) response[n] -= sum / hann_sum * hann[n];
}

}  // namespace

void finishResponse(const FinishPlan& plan, std::vector<double>& response) {
    applyFilter(lowShelf({kBassShelf_hz, kButterworthQ, plan.rate_hz}, plan.bass_shelf_db), response);
    applyFilter(highPass({plan.high_pass_hz, kButterworthQ, plan.rate_hz}), response);
    fadeEnd(plan.faded_part, response);
    removeSum(response);
}

std::vector<std::int16_t> quantise(const std::vector<double>& response, double scale) {
    std::vector<std::int16_t> table(response.size());
    const std::size_t sounding = soundingLength(response, scale);
    double carried = 0.0;
    for (std::size_t n = 0; n < sounding; ++n) {
        const double wanted = response[n] * scale + carried;
        const double rounded = std::floor(wanted + 0.5);
        if (!(rounded >= std::numeric_limits<std::int16_t>::min() &&
              rounded <= std::numeric_limits<std::int16_t>::max())) {
            throw UnmetTableFact("a value does not fit in 16 bits");
        }
        table[n] = static_cast<std::int16_t>(rounded);
        carried = n < kPlainlyRounded_samples ? 0.0 : wanted - rounded;
    }
    return table;
}

double peakMagnitude(const std::vector<double>& response) {
    double peak = 0.0;
    for (const double sample : response) peak = std::max(peak, std::abs(sample));
    return peak;
}

}  // namespace sonivex_irgen
