#include <cmath>

#include "decay.h"
#include "interaural.h"
#include "quality_rows.h"

namespace response_quality {
namespace {

template <typename Measure>
Row overSources(const Responses& responses, const char* measure, const char* unit, bool central,
                Measure figure) {
    Row row{measure, unit, {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            if (isCentral(source) == central) row.figures.push_back(figure(source));
        }
    }
    return row;
}

// Sign that turns a left-over-right level difference into a near-over-far one.
double nearSign(const Source& source) {
    return source.azimuth_deg > 0.0 ? 1.0 : -1.0;
}

double leastTrebleDifference_db(double azimuth_deg) {
    switch (std::lround(std::abs(azimuth_deg))) {
        case 30:
            return 6.0;
        case 90:
            return 5.0;
        case 110:
            return 3.0;
        default:
            return 2.0;  // 140
    }
}

}  // namespace

Row interauralDelays(const Responses& responses, double head_radius_m) {
    return overSources(
        responses, "interaural delay, deviation from Woodworth's", "us", false, [&](const Source& source) {
            const double expected_us = woodworthDelay_us(source.azimuth_deg, head_radius_m);
            return Figure{source.name, interauralDelay_us(source.ears) - expected_us, -50.0, 50.0};
        });
}

Row trebleLevelDifferences(const Responses& responses) {
    return overSources(
        responses, "interaural level difference, 4 kHz octave", "dB", false, [](const Source& source) {
            return Figure{source.name,
                          nearSign(source) * levelDifference_db(directSound(source.ears), 4000.0),
                          leastTrebleDifference_db(source.azimuth_deg), 22.0};
        });
}

Row middleLevelDifferences(const Responses& responses) {
    return overSources(
        responses, "interaural level difference, 500 Hz octave", "dB", false, [](const Source& source) {
            return Figure{source.name, nearSign(source) * levelDifference_db(directSound(source.ears), 500.0),
                          0.3, 8.0};
        });
}

Row centralDelays(const Responses& responses) {
    return overSources(responses, "interaural delay, centre", "us", true, [](const Source& source) {
        return Figure{source.name, interauralDelay_us(source.ears), -20.0, 20.0};
    });
}

Row centralLevelDifferences(const Responses& responses) {
    return overSources(
        responses, "interaural level difference, centre's direct sound", "dB", true,
        [](const Source& source) {
            return Figure{source.name, levelDifference_db(directSound(source.ears)), -0.5, 0.5};
        });
}

}  // namespace response_quality
