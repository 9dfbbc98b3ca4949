#include <array>
#include <cmath>
#include <string>

#include "decay.h"
#include "interaural.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

// At 30, 90, 110 and 140 degrees.
constexpr std::array kLeastTrebleDifferences_db{6.0, 5.0, 3.0, 2.0};

double nearOverFar_db(const Source& source, double octave_hz) {
    return nearSign(source) * levelDifference_db(directSound(source.ears), octave_hz);
}

// Near ear over far ear in kLowOctaves_hz, mean of a loudspeaker on the left and its mirror image.
Signal meanLowDifferences_db(const Ears& left, const Ears& right, double rate_hz) {
    Signal mean_db = octaveDifferences_db(left, kLowOctaves_hz, rate_hz);
    const Signal right_db = octaveDifferences_db(right, kLowOctaves_hz, rate_hz);
    for (std::size_t i = 0; i < mean_db.size(); ++i) mean_db[i] = (mean_db[i] - right_db[i]) / 2.0;
    return mean_db;
}

}  // namespace

Row trebleLevelDifferences(const Responses& responses) {
    return overSources(responses, "direct sound's level difference, 4 kHz octave", "dB", isAtTheSide,
                       [](const ResponseSet&, const Source& source) {
                           return Figure{source.name, nearOverFar_db(source, 4000.0),
                                         kLeastTrebleDifferences_db[placeAtTheSide(source)], 22.0};
                       });
}

Row middleLevelDifferences(const Responses& responses) {
    return overSources(responses, "direct sound's level difference, 500 Hz octave", "dB",
                       reachesBothEarsFromTheSide, [](const ResponseSet&, const Source& source) {
                           return Figure{source.name, nearOverFar_db(source, 500.0), 0.3, 8.0};
                       });
}

std::array<Row, kLowOctaves_hz.size()> lowLevelRows(const Responses& responses, const MeasuredHead& head) {
    std::array<Row, kLowOctaves_hz.size()> rows;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] = {"direct sound's level difference, " + std::to_string(std::lround(kLowOctaves_hz[i])) +
                       " Hz octave, deviation from head's",
                   "dB",
                   {}};
    }
    for (const ResponseSet& set : responses.sets) {
        if (!reachesBothEars(set)) continue;
        for (const auto& [left, right] : mirrorPairs(set)) {
            const Source& a = set.sources[left];
            const Source& b = set.sources[right];
            const Signal found_db = meanLowDifferences_db(directSound(a.ears), directSound(b.ears), kRate_hz);
            const Signal measured_db =
                meanLowDifferences_db(head.nearest(a.azimuth_deg), head.nearest(b.azimuth_deg), head.rate_hz);
            for (std::size_t i = 0; i < rows.size(); ++i) {
                rows[i].figures.push_back({pairName(set, a), found_db[i] - measured_db[i], -1.0, 1.0});
            }
        }
    }
    return rows;
}

Row centralLevelDifferences(const Responses& responses) {
    return overSources(
        responses, "direct sound's level difference, centre", "dB", isInTheMiddle,
        [](const ResponseSet&, const Source& source) {
            return Figure{source.name, levelDifference_db(directSound(source.ears)), -0.5, 0.5};
        });
}

}  // namespace response_quality
