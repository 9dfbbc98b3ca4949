#include "head_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "interaural_delay.h"
#include "low_frequency_delay.h"
#include "minimum_phase.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kNearest = 4;
constexpr double kHalfDegree_rad = 0.0087266;  // keeps the weight finite at a measured direction
constexpr std::size_t kEarResponse_samples = 512;
constexpr double kLargestDeparture_s = 30e-6;  // of the direct sound's delay from the sphere's

// Arrivals in whole samples at the left and the right ear, which hears the sound right_later_s later.
std::array<std::int64_t, kEars> wholeSamples(double right_later_s, double centre_samples) {
    const bool is_from_the_left = right_later_s >= 0.0;
    const double later_s = is_from_the_left ? right_later_s : -right_later_s;
    const auto later = static_cast<std::int64_t>(std::floor(later_s * kRate_hz + 0.5));
    const auto centre = static_cast<std::int64_t>(std::floor(centre_samples + 0.5));
    const std::int64_t near = centre - later / 2;
    const std::int64_t far = near + later;
    if (is_from_the_left) return {near, far};
    return {far, near};
}

}  // namespace

HeadModel::HeadModel(std::vector<DirectionalTransfer> transfers, double radius_m)
    : transfers_(std::move(transfers)), radius_m_(radius_m) {}

std::vector<HeadModel::Neighbour> HeadModel::nearest(const Vector3& direction) const {
    // Pairs of chord and index, so that equal chords are taken in the file's order.
    std::vector<std::pair<double, std::size_t>> chords;
    chords.reserve(transfers_.size());
    for (std::size_t m = 0; m < transfers_.size(); ++m) {
        chords.emplace_back(length(transfers_[m].direction - direction), m);
    }
    const std::size_t count = std::min(kNearest, chords.size());
    std::partial_sort(chords.begin(), chords.begin() + static_cast<std::ptrdiff_t>(count), chords.end());

    std::vector<Neighbour> neighbours;
    double total = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto [chord, index] = chords[i];
        const double weight = 1.0 / ((chord + kHalfDegree_rad) * (chord + kHalfDegree_rad));
        neighbours.push_back({&transfers_[index], weight});
        total += weight;
    }
    for (Neighbour& neighbour : neighbours) neighbour.weight /= total;
    return neighbours;
}

EarSpectra HeadModel::transfer_db(const Vector3& direction) const {
    EarSpectra mean_db;
    for (std::vector<double>& spectrum : mean_db) spectrum.assign(kHeadBins, 0.0);
    for (const Neighbour& neighbour : nearest(direction)) {
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            const std::vector<double>& measured_db = neighbour.transfer->transfer_db[ear];
            for (std::size_t k = 0; k < kHeadBins; ++k) mean_db[ear][k] += neighbour.weight * measured_db[k];
        }
    }
    return mean_db;
}

std::array<std::int64_t, kEars> HeadModel::arrivals(const Vector3& direction, double centre_samples) const {
    return wholeSamples(woodworthDelay_s(radius_m_, direction), centre_samples);
}

std::array<std::int64_t, kEars> HeadModel::directArrivals(const Vector3& direction,
                                                          double centre_samples) const {
    double measured_s = 0.0;
    for (const Neighbour& neighbour : nearest(direction)) {
        measured_s += neighbour.weight * neighbour.transfer->low_frequency_delay_s;
    }
    const EarSpectra heard_db = transfer_db(direction);
    const double own_s =
        lowFrequencyDelay_s({earResponse(heard_db[0]), earResponse(heard_db[1])}, kRate_hz, 0.0);
    const double sphere_s = woodworthDelay_s(radius_m_, direction);
    return wholeSamples(
        std::clamp(measured_s - own_s, sphere_s - kLargestDeparture_s, sphere_s + kLargestDeparture_s),
        centre_samples);
}

std::vector<double> earResponse(const std::vector<double>& transfer_db) {
    return minimumPhaseResponse(transfer_db, kEarResponse_samples);
}

void addResponse(const std::vector<double>& response, double gain, std::int64_t start,
                 std::vector<double>& signal) {
    const auto length = static_cast<std::int64_t>(signal.size());
    for (std::size_t n = 0; n < response.size(); ++n) {
        const std::int64_t place = start + static_cast<std::int64_t>(n);
        if (place >= 0 && place < length) signal[static_cast<std::size_t>(place)] += gain * response[n];
    }
}

}  // namespace sonivex_irgen
