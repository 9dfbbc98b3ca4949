#include "directional_transfer.h"

#include <algorithm>
#include <cmath>

#include "fft.h"
#include "low_frequency_delay.h"
#include "octave_smoothing.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kMeasuredPoints = 4096;
constexpr double kSmoothing_octaves = 1.0 / 12.0;  // half width
// Grids have steps of 5 degrees. The margin keeps neighbours at 15 degrees inside despite rounding.
constexpr double kNeighbourhood_deg = 15.001;
constexpr double kLowest_db = -30.0;
constexpr double kHighest_db = 15.0;
constexpr double kHeldFrom_hz = 15000.0;
constexpr double kFadeStart_hz = 150.0;
constexpr double kFadeEnd_hz = 50.0;
constexpr double kSmallestPower = 1e-30;  // keeps the logarithm finite

std::vector<double> smoothedPower(const std::vector<double>& response) {
    return smoothOverOctaves(powerSpectrum(response, kMeasuredPoints), kSmoothing_octaves);
}

// One weight for each direction; it is smaller where the grid is dense.
std::vector<double> densityWeights(const HeadMeasurements& head) {
    const double smallest_cosine = exactCos(kNeighbourhood_deg * kPi / 180.0);
    std::vector<double> weights;
    weights.reserve(head.directions.size());
    for (const HeadMeasurement& here : head.directions) {
        std::size_t neighbours = 0;
        for (const HeadMeasurement& other : head.directions) {
            if (dot(here.direction, other.direction) >= smallest_cosine) ++neighbours;
        }
        // A unit vector lies in its own neighbourhood; the limit of 1 covers a direction that is not one.
        weights.push_back(1.0 / static_cast<double>(std::max<std::size_t>(neighbours, 1)));
    }
    return weights;
}

std::vector<double> diffuseFieldPower(const HeadMeasurements& head) {
    const std::vector<double> weights = densityWeights(head);
    std::vector<double> sum(kMeasuredPoints / 2 + 1, 0.0);
    double total = 0.0;
    for (std::size_t m = 0; m < head.directions.size(); ++m) {
        for (const std::vector<double>& response : head.directions[m].ears) {
            const std::vector<double> power = smoothedPower(response);
            for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += weights[m] * power[k];
            total += weights[m];
        }
    }
    for (double& value : sum) value /= total;
    return sum;
}

// Linear interpolation between bins at a fractional position.
double readAt(const std::vector<double>& values, double position) {
    const double below = std::floor(position);
    const auto index = std::min(static_cast<std::size_t>(below), values.size() - 2);
    const double fraction = position - static_cast<double>(index);
    return values[index] + fraction * (values[index + 1] - values[index]);
}

// 0 at kFadeEnd_hz and below, 1 at kFadeStart_hz and above, a raised cosine over log f between.
double bassWeight(double frequency_hz) {
    if (frequency_hz <= kFadeEnd_hz) return 0.0;
    return halfCosineFade(exactLog(kFadeStart_hz / frequency_hz) / exactLog(kFadeStart_hz / kFadeEnd_hz));
}

// Resamples T from the bins at the file's sample rate to the kHeadBins bins at kRate_hz.
std::vector<double> atHeadBins(const std::vector<double>& measured_db, double rate_hz) {
    const double bins_per_hz = static_cast<double>(kMeasuredPoints) / rate_hz;
    std::vector<double> transfer_db(kHeadBins);
    for (std::size_t k = 0; k < kHeadBins; ++k) {
        const double frequency_hz = static_cast<double>(k) * kRate_hz / static_cast<double>(kHeadPoints);
        const double read_hz = std::min(frequency_hz, kHeldFrom_hz);
        transfer_db[k] = readAt(measured_db, read_hz * bins_per_hz) * bassWeight(frequency_hz);
    }
    return transfer_db;
}

}  // namespace

std::vector<DirectionalTransfer> directionalTransfers(const HeadMeasurements& head) {
    const std::vector<double> average = diffuseFieldPower(head);
    std::vector<DirectionalTransfer> transfers;
    transfers.reserve(head.directions.size());
    for (const HeadMeasurement& measured : head.directions) {
        DirectionalTransfer& transfer = transfers.emplace_back();
        transfer.direction = measured.direction;
        transfer.low_frequency_delay_s =
            lowFrequencyDelay_s(measured.ears, head.rate_hz,
                                (measured.delays_samples[1] - measured.delays_samples[0]) / head.rate_hz);
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            std::vector<double> level_db = smoothedPower(measured.ears[ear]);
            for (std::size_t k = 0; k < level_db.size(); ++k) {
                const double ratio =
                    std::max(level_db[k], kSmallestPower) / std::max(average[k], kSmallestPower);
                level_db[k] = std::clamp(powerToDb(ratio), kLowest_db, kHighest_db);
            }
            transfer.transfer_db[ear] = atHeadBins(level_db, head.rate_hz);
        }
    }
    return transfers;
}

}  // namespace sonivex_irgen
