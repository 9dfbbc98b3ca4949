#include "ratios.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "decay.h"

namespace response_quality {
namespace {

constexpr std::size_t kMeanOctaves = 4;  // 500 Hz to 4 kHz

// Adds the energy of a part of a response to the energies of the octaves.
void addOctaves(const Signal& part, OctaveRatios& energies) {
    const Signal power = powerOf(part, kOctavePoints);
    for (std::size_t i = 0; i < energies.size(); ++i) {
        energies[i] += octaveSum(power, kRate_hz, kRatioOctaves_hz[i]);
    }
}

}  // namespace

OctaveRatios directToReverberant_db(std::span<const Signal> responses) {
    OctaveRatios direct{};
    OctaveRatios reverberant{};
    for (const Signal& response : responses) {
        addOctaves(directSound(response), direct);
        addOctaves(reverberantSound(response), reverberant);
    }
    OctaveRatios ratios_db{};
    for (std::size_t i = 0; i < ratios_db.size(); ++i) {
        ratios_db[i] = 10.0 * std::log10(direct[i] / reverberant[i]);
    }
    return ratios_db;
}

OctaveRatios meanOf(const OctaveRatios& a, const OctaveRatios& b) {
    OctaveRatios mean{};
    for (std::size_t i = 0; i < mean.size(); ++i) mean[i] = (a[i] + b[i]) / 2.0;
    return mean;
}

double meanRatio_db(const OctaveRatios& ratios_db) {
    return std::accumulate(ratios_db.begin(), ratios_db.begin() + kMeanOctaves, 0.0) / kMeanOctaves;
}

double lowestRatio_db(const OctaveRatios& ratios_db) {
    return *std::min_element(ratios_db.begin(), ratios_db.end());
}

double ratioSpread_db(const OctaveRatios& ratios_db) {
    const auto [lowest, highest] = std::minmax_element(ratios_db.begin(), ratios_db.end());
    return *highest - *lowest;
}

}  // namespace response_quality
