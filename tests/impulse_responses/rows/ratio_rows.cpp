#include <array>
#include <string>

#include "quality_rows.h"
#include "ratios.h"
#include "row_loops.h"

namespace response_quality {
namespace {

// Limits of type 1 and of modes 1 to 3.
struct RatioLimits {
    double lowest_mean_db;
    double highest_mean_db;
    double least_db;
};
constexpr std::array<RatioLimits, 4> kLimits{
    {{5.0, 9.0, 4.0}, {6.5, 11.0, 5.0}, {5.0, 9.0, 4.0}, {4.0, 8.0, 3.0}}};
constexpr double kWidestSpread_db = 4.0;

const RatioLimits& limitsOf(const ResponseSet& set) {
    return kLimits[static_cast<std::size_t>(set.mode)];
}

// Adds the lowest octave and the spread of the octaves to their rows.
void addEvenness(const ResponseSet& set, const std::string& name, const OctaveRatios& ratios_db, Row& lowest,
                 Row& spread) {
    lowest.figures.push_back({name, lowestRatio_db(ratios_db), limitsOf(set).least_db, kNoLimit});
    spread.figures.push_back({name, ratioSpread_db(ratios_db), 0.0, kWidestSpread_db});
}

}  // namespace

RatioRows ratioRows(const Responses& responses) {
    RatioRows rows{
        .mean = {"direct-to-reverberant ratio, mean of 500 Hz to 4 kHz", "dB", {}},
        .lowest = {"direct-to-reverberant ratio, lowest octave", "dB", {}},
        .spread = {"direct-to-reverberant ratio, spread of octaves", "dB", {}},
    };
    for (const ResponseSet& set : responses.sets) {
        if (!reachesBothEars(set)) continue;
        for (const auto& [left, right] : mirrorPairs(set)) {
            const OctaveRatios ratios_db = meanOf(directToReverberant_db(set.sources[left].ears),
                                                  directToReverberant_db(set.sources[right].ears));
            const std::string name = pairName(set, set.sources[left]);
            rows.mean.figures.push_back(
                {name, meanRatio_db(ratios_db), limitsOf(set).lowest_mean_db, limitsOf(set).highest_mean_db});
            addEvenness(set, name, ratios_db, rows.lowest, rows.spread);
        }
    }
    return rows;
}

SumRatioRows sumRatioRows(const Responses& responses) {
    SumRatioRows rows{
        .lowest = {"ratio of the sum at an ear, lowest octave", "dB", {}},
        .spread = {"ratio of the sum at an ear, spread of octaves", "dB", {}},
    };
    for (const ResponseSet& set : responses.sets) {
        if (!feedsEachEarItsOwnChannel(set)) continue;
        const Ears sum = sumOfFrontPair(set);
        for (std::size_t ear = 0; ear < 2; ++ear) {
            addEvenness(set, set.name + kEarNames[ear], directToReverberant_db({&sum[ear], 1}), rows.lowest,
                        rows.spread);
        }
    }
    return rows;
}

}  // namespace response_quality
