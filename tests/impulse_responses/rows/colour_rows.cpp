#include "quality_rows.h"
#include "row_loops.h"
#include "tone.h"

namespace response_quality {
namespace {

constexpr double kLowest_hz = 80.0;
constexpr double kLowestOfModes_hz = 250.0;  // the modes lift the bass by design, so they are judged above it
constexpr double kHighest_hz = 12500.0;

// Third-octave levels of music from the front pair, with the Audio stage behind the modes.
Signal frontColour_db(const Responses& responses, const ResponseSet& set) {
    return colour_db(frontPairPower(withAudioStage(frontPair(set), responses.audio_stage)),
                     set.kind == Kind::kMode ? kLowestOfModes_hz : kLowest_hz, kHighest_hz);
}

// Third-octave levels of a mono programme from the front pair.
Signal phantomColour_db(const ResponseSet& set) {
    return colour_db(sourcePower(sumOfFrontPair(set)), kLowest_hz, kHighest_hz);
}

}  // namespace

Row frontColourRms(const Responses& responses) {
    Row row{"front pair colour, rms", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        const double highest_db = set.kind == Kind::kMode ? 1.2 : 1.0;
        row.figures.push_back({set.name, rms(frontColour_db(responses, set)), 0.0, highest_db});
    }
    return row;
}

Row frontColourWorst(const Responses& responses) {
    Row row{"front pair colour, worst third octave", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        row.figures.push_back({set.name, worst(frontColour_db(responses, set)), 0.0, 2.5});
    }
    return row;
}

Row loudspeakerColours(const Responses& responses) {
    return overSources(
        responses, "colour of one loudspeaker, rms", "dB",
        [](const ResponseSet& set, const Source& source) {
            return set.kind != Kind::kMode && source.role != Role::kLowFrequency;
        },
        [](const ResponseSet&, const Source& source) {
            const Signal levels_db = colour_db(sourcePower(source.ears), kLowest_hz, kHighest_hz);
            return Figure{source.name, rms(levels_db), 0.0, 1.6};
        });
}

Row phantomColourRms(const Responses& responses) {
    Row row{"colour of the phantom middle, rms", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind == Kind::kMode) continue;
        row.figures.push_back({set.name, rms(phantomColour_db(set)), 0.0, 1.0});
    }
    return row;
}

Row phantomColourWorst(const Responses& responses) {
    Row row{"colour of the phantom middle, worst third octave", "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        if (set.kind == Kind::kMode) continue;
        row.figures.push_back({set.name, worst(phantomColour_db(set)), 0.0, 3.0});
    }
    return row;
}

}  // namespace response_quality
