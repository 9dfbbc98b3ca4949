#include <cmath>
#include <nlohmann/json.hpp>

#include "responses_report.h"

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

Json numberOrNull(const std::optional<double>& value) {
    return value && std::isfinite(*value) ? Json(*value) : Json(nullptr);
}

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json objectOf(const MeasuredTable& table) {
    return {{"ear", table.ear},
            {"table", table.name},
            {"samples", table.samples},
            {"peak", table.figures.peak},
            {"energy_db", numberOrNull(table.figures.energy_db)},
            {"arrival_samples", table.figures.arrival_samples},
            {"arrival_ms", table.figures.arrival_ms},
            {"reverberation_s", numberOrNull(table.figures.reverberation_s)}};
}

Json objectOf(int octave_hz, const OctaveMeasures& figures) {
    return {{"octave_hz", octave_hz},
            {"direct_to_reverberant_db", numberOrNull(figures.direct_to_reverberant_db)},
            {"level_difference_direct_db", numberOrNull(figures.level_difference.direct_db)},
            {"level_difference_whole_db", numberOrNull(figures.level_difference.whole_db)},
            {"early_correlation", numberOrNull(figures.early_correlation)}};
}

Json octavesOf(const SourceMeasures& figures) {
    Json octaves = Json::array();
    for (std::size_t i = 0; i < kOctaves_hz.size(); ++i) {
        octaves.push_back(objectOf(kOctaves_hz.at(i), figures.octaves.at(i)));
    }
    return octaves;
}

Json objectOf(const MeasuredSource& source) {
    Json tables = Json::array();
    for (const MeasuredTable& table : source.tables) tables.push_back(objectOf(table));
    return {{"source", source.number},
            {"loudspeaker", textOrNull(source.loudspeaker)},
            {"tables", tables},
            {"interaural_delay_us", numberOrNull(source.figures.delay_us)},
            {"level_difference_direct_db", numberOrNull(source.figures.level_difference.direct_db)},
            {"level_difference_whole_db", numberOrNull(source.figures.level_difference.whole_db)},
            {"octaves", octavesOf(source.figures)}};
}

Json objectOf(const MeasuredSet& measured) {
    Json sources = Json::array();
    for (const MeasuredSource& source : measured.sources) sources.push_back(objectOf(source));
    return {{"set", measured.set->name},
            {"use", measured.set->use},
            {"rate_hz", measured.set->format.rate_hz},
            {"divisor", measured.set->format.divisor},
            {"has_crosstalk", measured.set->has_crosstalk},
            {"sources", sources},
            {"as_heard", measured.as_heard ? octavesOf(*measured.as_heard) : Json(nullptr)}};
}

}  // namespace

std::string responsesJson(const std::vector<MeasuredSet>& sets) {
    Json array = Json::array();
    for (const MeasuredSet& set : sets) array.push_back(objectOf(set));
    return Json{{"sets", array}}.dump() + "\n";
}

}  // namespace sonivex_tool
