#include <cmath>
#include <string>

#include "decay.h"
#include "diffuseness.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

struct JudgedRole {
    Role role;
    const char* name;
    double lowest;
    double highest;
};

constexpr JudgedRole kJudgedRoles[] = {{Role::kFront, " front", 0.45, 0.80},
                                       {Role::kCentre, " centre", 0.60, 0.90},
                                       {Role::kSurround, " surround", 0.35, 0.75}};

}  // namespace

Row strongestReflections(const Responses& responses) {
    return overSources(responses, "strongest 1 ms reflection, relative to direct sound", "dB", anySource,
                       [](const ResponseSet&, const Source& source) {
                           return Figure{source.name, strongestReflection_db(source.ears), -kNoLimit, -10.0};
                       });
}

Row reverberationTimes(const Responses& responses, double octave_hz, double lowest, double highest) {
    const std::string measure =
        "reverberation time deviation, " + std::to_string(std::lround(octave_hz)) + " Hz octave";
    return overSources(responses, measure, "%", anySource,
                       [octave_hz, lowest, highest](const ResponseSet& set, const Source& source) {
                           const double time_s = reverberationTime_s(source.ears, octave_hz, set.faded_part);
                           return Figure{source.name, 100.0 * (time_s / set.reverberation_time_s - 1.0),
                                         100.0 * lowest, 100.0 * highest};
                       });
}

Row tailUnevenness(const Responses& responses) {
    return overSources(
        responses, "tail in 5 ms steps, rms deviation from straight decay", "dB", anySource,
        [](const ResponseSet& set, const Source& source) {
            return Figure{source.name, tailUnevenness_db(source.ears, set.faded_part), 0.0, 2.5};
        });
}

Row tailRises(const Responses& responses) {
    return overSources(
        responses, "tail in 10 ms steps, largest rise", "dB", anySource,
        [](const ResponseSet& set, const Source& source) {
            return Figure{source.name, tailRise_db(source.ears, set.faded_part), -kNoLimit, 2.0};
        });
}

Row tailCoherenceErrors(const Responses& responses) {
    return overSources(
        responses, "tail coherence, rms deviation from a diffuse field's", "",
        [](const ResponseSet& set, const Source& source) { return !hasEqualEars(set, source); },
        [](const ResponseSet& set, const Source& source) {
            const double error = coherenceError(source.ears, set.reverberation_time_s);
            return Figure{source.name, error, 0.0, 0.2};
        });
}

Row earlyCorrelations(const Responses& responses) {
    Row row{"interaural correlation of the first 80 ms", "", {}};
    for (const ResponseSet& set : responses.sets) {
        if (!reachesBothEars(set)) continue;
        for (const auto& [role, name, lowest, highest] : kJudgedRoles) {
            double sum = 0.0;
            int loudspeakers = 0;
            for (const Source& source : set.sources) {
                if (source.role != role || hasEqualEars(set, source)) continue;
                sum += earlyCorrelation(source.ears);
                ++loudspeakers;
            }
            if (loudspeakers == 0) continue;
            row.figures.push_back({set.name + name, sum / loudspeakers, lowest, highest});
        }
    }
    return row;
}

}  // namespace response_quality
