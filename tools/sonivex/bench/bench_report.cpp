#include "bench_report.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

}  // namespace

std::string benchText(const BenchReport& report) {
    std::string text = report.processor.empty() ? "unknown processor" : report.processor;
    text += "; vectors: " + (report.vectors.empty() ? "unknown" : report.vectors) + "\n";
    std::array<char, 160> line{};
    (void)std::snprintf(line.data(), line.size(), "%-10s  %-10s  %8s  %15s  %11s\n", "effect", "type",
                        "channels", "times real time", "of one core");
    text += line.data();
    for (const BenchReport::Row& row : report.rows) {
        (void)std::snprintf(line.data(), line.size(), "%-10s  %-10s  %8d  %15.0f  %9.3f %%\n",
                            row.shape.effect.c_str(), row.shape.type.empty() ? "-" : row.shape.type.c_str(),
                            row.shape.channels, row.timing.timesRealTime(), row.timing.core_percent());
        text += line.data();
    }
    return text;
}

std::string benchJson(const BenchReport& report) {
    Json rows = Json::array();
    for (const BenchReport::Row& row : report.rows) {
        rows.push_back({{"effect", row.shape.effect},
                        {"type", textOrNull(row.shape.type)},
                        {"channels", row.shape.channels},
                        {"frames_per_call", row.shape.call_frames},
                        {"rounds", row.timing.rounds},
                        {"cpu_ms_per_s", row.timing.cpu_ms_per_s},
                        {"times_real_time", row.timing.timesRealTime()},
                        {"core_percent", row.timing.core_percent()}});
    }
    const Json object = {{"processor", textOrNull(report.processor)},
                         {"vectors", textOrNull(report.vectors)},
                         {"sample_rate_hz", kBenchRateHz},
                         {"rows", std::move(rows)}};
    // The system's name of the processor need not be UTF-8.
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
