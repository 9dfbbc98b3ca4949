#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "interaural.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

constexpr std::size_t kEndSamples = 64;
constexpr double kNothing_db = -200.0;  // stands for zero energy

// One figure value(source, ear) for each ear of each source, and for the Audio stage.
template <typename Measure>
Row overEars(const Responses& responses, const char* measure, double highest_db, Measure value) {
    Row row{measure, "dB", {}};
    for (const ResponseSet& set : responses.sets) {
        for (const Source& source : set.sources) {
            for (std::size_t ear = 0; ear < 2; ++ear) {
                row.figures.push_back(
                    {source.name + kEarNames[ear], value(source, ear), -kNoLimit, highest_db});
            }
        }
    }
    const Source audio_stage{.name = "Audio", .ears = {responses.audio_stage, responses.audio_stage}};
    row.figures.push_back({audio_stage.name, value(audio_stage, 0), -kNoLimit, highest_db});
    for (Figure& figure : row.figures) figure.value = std::max(figure.value, kNothing_db);
    return row;
}

}  // namespace

Row energiesBeforeArrival(const Responses& responses) {
    return overEars(responses, "energy before the first arrival", -60.0,
                    [](const Source& source, std::size_t ear) {
                        const std::size_t first = std::min(onset(source.ears[0]), onset(source.ears[1]));
                        const Signal& signal = source.ears[ear];
                        return 10.0 * std::log10(energyOf(std::span(signal).first(first)) / energyOf(signal));
                    });
}

Row energiesAtTheEnd(const Responses& responses) {
    return overEars(
        responses, "energy of the last 64 samples", -60.0, [](const Source& source, std::size_t ear) {
            const Signal& signal = source.ears[ear];
            return 10.0 * std::log10(energyOf(std::span(signal).last(kEndSamples)) / energyOf(signal));
        });
}

Row constantParts(const Responses& responses) {
    return overEars(responses, "gain at 0 Hz", -45.0, [](const Source& source, std::size_t ear) {
        double sum = 0.0;
        for (const double value : source.ears[ear]) sum += value;
        return 20.0 * std::log10(std::abs(sum) / std::sqrt(energyOf(source.ears[ear])));
    });
}

}  // namespace response_quality
