#include <algorithm>
#include <cmath>

#include "diffuseness.h"
#include "interaural.h"
#include "quality_rows.h"
#include "tone.h"

namespace response_quality {
namespace {

template <typename Measure>
Row overFrontPairs(const Responses& responses, const char* measure, const char* unit, Measure figure) {
    Row row{measure, unit, {}};
    for (const ResponseSet& set : responses.sets) {
        row.figures.push_back(figure(withAudioStage(frontPair(set), responses.audio_stage)));
    }
    return row;
}

}  // namespace

Row cingoCrosstalk(const Responses& responses) {
    Row row{"cingo crosstalk to the far ear", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind != Kind::kCingo) continue;
        row.figures.push_back({"left to right ear", -levelDifference_db(set.sources[0].ears), -16.0, -4.0});
        row.figures.push_back({"right to left ear", levelDifference_db(set.sources[1].ears), -16.0, -4.0});
    }
    return row;
}

Row monoCorrelations(const Responses& responses) {
    return overFrontPairs(
        responses, "mono programme, correlation of the ears", "", [](const ResponseSet& heard) {
            const Ears mono = sumOfFrontPair(heard);
            return Figure{heard.name, correlation(mono[0], mono[1], 300.0, 12000.0), -1.0, 0.97};
        });
}

Row bassLifts(const Responses& responses) {
    Row row{"bass lift", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind != Kind::kMode) continue;
        const ResponseSet heard = withAudioStage(frontPair(set), responses.audio_stage);
        const double meant_db = 2.0 + 2.0 * set.mode;
        row.figures.push_back(
            {set.name, bassLift_db(frontPairPower(heard), kRate_hz), meant_db - 1.0, meant_db + 1.0});
    }
    const Signal stage = responsePower(responses.audio_stage);
    row.figures.push_back({"Audio alone at 44.1 kHz", bassLift_db(stage, kAudioRate_hz), 3.2, 5.2});
    row.figures.push_back({"Audio alone at 48 kHz", bassLift_db(stage, kRate_hz), 3.2, 5.2});
    return row;
}

Row pinkLoudnessChanges(const Responses& responses) {
    return overFrontPairs(responses, "loudness change, pink noise", "LU", [](const ResponseSet& heard) {
        return Figure{heard.name, loudnessChange_lu(frontPairPower(heard), Programme::kPink), -2.0, 2.0};
    });
}

Row musicLoudnessChanges(const Responses& responses) {
    return overFrontPairs(responses, "loudness change, music spectrum", "LU", [](const ResponseSet& heard) {
        return Figure{heard.name, loudnessChange_lu(frontPairPower(heard), Programme::kMusic), -3.0, 3.0};
    });
}

Row sourceBalances(const Responses& responses) {
    Row row{"loudest relative to softest source", "LU", {}};
    for (const ResponseSet& set : responses.sets) {
        Signal loudness_lu;
        for (const Source& source : withAudioStage(set, responses.audio_stage).sources) {
            if (source.role == Role::kLowFrequency) continue;
            loudness_lu.push_back(loudnessChange_lu(sourcePower(source.ears), Programme::kPink));
        }
        const auto [softest, loudest] = std::minmax_element(loudness_lu.begin(), loudness_lu.end());
        row.figures.push_back({set.name, *loudest - *softest, 0.0, 1.5});
    }
    return row;
}

Row lowFrequencyLevels(const Responses& responses) {
    Row row{"low-frequency source relative to centre, 31-125 Hz", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind != Kind::kBingo) continue;
        const double low_db = bandLevel_db(sourcePower(set.sources[3].ears), kRate_hz, 31.0, 125.0);
        const double centre_db = bandLevel_db(sourcePower(set.sources[2].ears), kRate_hz, 31.0, 125.0);
        row.figures.push_back({set.name, low_db - centre_db, 6.0, 10.5});
    }
    return row;
}

Row lowFrequencyRipples(const Responses& responses) {
    Row row{"low-frequency source ripple, 31-125 Hz", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind != Kind::kBingo) continue;
        const Signal power = sourcePower(set.sources[3].ears);
        const double mean_db = bandLevel_db(power, kRate_hz, 31.0, 125.0);
        double lowest_db = 1e9;
        double highest_db = -1e9;
        for (std::size_t k = 1; k < power.size(); ++k) {
            const double frequency_hz =
                static_cast<double>(k) * kRate_hz / static_cast<double>(2 * (power.size() - 1));
            if (frequency_hz < 31.0 || frequency_hz > 125.0) continue;
            lowest_db = std::min(lowest_db, 10.0 * std::log10(power[k]) - mean_db);
            highest_db = std::max(highest_db, 10.0 * std::log10(power[k]) - mean_db);
        }
        row.figures.push_back({set.name + " lowest", lowest_db, -1.0, 1.0});
        row.figures.push_back({set.name + " highest", highest_db, -1.0, 1.0});
    }
    return row;
}

}  // namespace response_quality
