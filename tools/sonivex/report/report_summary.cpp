#include "report_summary.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "axis.h"
#include "console.h"
#include "responses_tables.h"
#include "source_measures.h"

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;
using sonivex_plotting::fixed;

// More decimals than these are noise of the measurement.
Json rounded(double value, double per_unit) {
    return std::round(value * per_unit) / per_unit;
}

Json level(const std::optional<double>& value) {
    return value ? rounded(*value, 100.0) : Json(nullptr);
}

Json presenceOf(const MeasuredVersion& version) {
    const std::optional<double> mean = meanPresence(version.presence);
    return mean ? rounded(*mean, 1000.0) : Json(nullptr);
}

Json guardJson(const MeasuredVersion& version) {
    Json events = Json::array();
    for (const GuardEvent& event : version.guard_events)
        events.push_back({{"time_s", rounded(event.time_s, 1000.0)},
                          {"state", event.is_bypassed ? "bypassed" : "processing"}});
    return {{"calls", version.calls},
            {"dropped", version.dropped_calls},
            {"bypassed", version.bypassed_calls},
            {"events", events}};
}

Json sourceJson(const MeasuredSource& source) {
    Json octaves = Json::array();
    for (std::size_t i = 0; i < kOctaves_hz.size(); ++i) {
        const OctaveMeasures& octave = source.figures.octaves.at(i);
        octaves.push_back({{"centre_hz", kOctaves_hz.at(i)},
                           {"direct_to_reverberant_db", level(octave.direct_to_reverberant_db)},
                           {"level_difference_db", level(octave.level_difference.whole_db)}});
    }
    return {{"number", source.number},
            {"loudspeaker", source.loudspeaker},
            {"interaural_delay_us", level(source.figures.delay_us)},
            {"level_difference_db", level(source.figures.level_difference.whole_db)},
            {"octaves", octaves}};
}

Json responsesJson(const MeasuredVersion& version) {
    Json sets = Json::array();
    for (const MeasuredSet& set : version.responses) {
        Json sources = Json::array();
        for (const MeasuredSource& source : set.sources) sources.push_back(sourceJson(source));
        sets.push_back({{"set", set.set->name}, {"loudspeakers", sources}});
    }
    return sets;
}

Json versionJson(const MeasuredVersion& version, bool has_sound) {
    const LoudnessCurve& loudness = version.loudness;
    return {{"title", version.title},
            {"effect", version.choice.empty() ? Json(nullptr) : Json(version.choice)},
            {"sample_rate_hz", version.spec.rate_hz},
            {"channels", version.spec.channels()},
            {"channel_layout", layoutName(version.spec.layout)},
            {"frames", version.frames},
            {"length_s", rounded(version.length_s(), 1e6)},
            {"integrated_lufs", level(loudness.integrated_lufs)},
            {"relative_gate_lufs", level(loudness.relative_gate_lufs)},
            {"loudness_range_lu", level(loudness.range_lu)},
            {"true_peak_dbtp", level(loudness.true_peak_dbtp)},
            {"mean_presence", presenceOf(version)},
            {"matching_gain_db", has_sound ? rounded(version.matching_gain_db, 100.0) : Json(nullptr)},
            {"sound_bytes", version.opus.size()},
            {"conversions", version.conversions},
            {"load_guard", guardJson(version)},
            {"responses", responsesJson(version)}};
}

Json soundJson(const MeasuredReport& report) {
    if (!report.has_sound) return nullptr;
    return {{"codec", "opus"},
            {"start_s", rounded(report.sound.start_s, 1000.0)},
            // The page divides by it, and a single sample is shorter than a millisecond.
            {"length_s", rounded(report.sound.length_s, 1e6)},
            {"is_excerpt", report.sound.is_excerpt},
            {"bit_rate_bps", report.sound.rate_bps}};
}

std::string levelText(const std::optional<double>& value, const std::string& unit) {
    return value ? fixed(*value, 1) + " " + unit : "not measurable";
}

}  // namespace

std::string summaryJson(const MeasuredReport& report) {
    Json versions = Json::array();
    for (const MeasuredVersion& version : report.versions)
        versions.push_back(versionJson(version, report.has_sound));
    const Json json = {{"schema_version", kSummaryVersion},
                       {"generator", "sonivex " SONIVEX_VERSION},
                       {"input",
                        {{"path", report.input},
                         {"format", report.source.container},
                         {"codec", report.source.codec},
                         {"stream", report.source.stream_number},
                         {"is_damaged", report.damage.isDamaged()}}},
                       {"sound", soundJson(report)},
                       {"versions", versions},
                       {"notes", report.notes}};
    // File names may hold any bytes, but JSON must be UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string summaryText(const MeasuredReport& report, std::size_t page_bytes) {
    std::string text = "Input        " + report.input + " (" + report.source.codec + ", " +
                       clockTime(report.versions.front().length_s()) + ")\n";
    for (const MeasuredVersion& version : report.versions) {
        text += "Version      " + version.title + ": " + levelText(version.loudness.integrated_lufs, "LUFS") +
                ", true peak " +
                (version.loudness.true_peak_dbtp ? fixed(*version.loudness.true_peak_dbtp, 1) + " dBTP"
                                                 : std::string("none (silence)")) +
                "\n";
    }
    if (page_bytes > 0) text += "Page         " + fixed(static_cast<double>(page_bytes) / 1e6, 2) + " MB\n";
    return text;
}

}  // namespace sonivex_tool
