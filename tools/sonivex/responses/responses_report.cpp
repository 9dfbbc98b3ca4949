#include "responses_report.h"

#include <array>
#include <cstdio>
#include <functional>
#include <nlohmann/json.hpp>

#include "responses_measures.h"

namespace sonivex_tool {
namespace {

using Row = std::function<void(const ResponseSet&, int source, const char* ear, const ResponseTable&)>;

void forEachTable(const ResponseSet& set, const std::optional<int>& wanted, const Row& row) {
    for (std::size_t i = 0; i < set.sources.size(); ++i) {
        const int number = static_cast<int>(i) + 1;
        if (wanted && *wanted != number) continue;
        const ResponseSource& source = set.sources[i];
        if (isSharedByBothEars(source)) {
            row(set, number, "both", source.left);
            continue;
        }
        row(set, number, "left", source.left);
        row(set, number, "right", source.right);
    }
}

}  // namespace

std::string responsesText(const ResponseChoice& choice) {
    std::string text;
    std::array<char, 160> line{};
    const auto append = [&] { text += line.data(); };
    for (const ResponseSet* chosen : choice.sets) {
        (void)std::snprintf(line.data(), line.size(), "%s%s: %s; %d Hz, sample = gain x %.0f\n",
                            text.empty() ? "" : "\n", chosen->name.c_str(), chosen->use.c_str(),
                            chosen->format.rate_hz, chosen->format.divisor);
        append();
        (void)std::snprintf(line.data(), line.size(), "  %-16s %6s  %-5s %8s %7s %8s %20s %10s\n", "table",
                            "source", "ear", "samples", "peak", "energy", "arrival", "reverb");
        append();
        forEachTable(*chosen, choice.source,
                     [&](const ResponseSet& set, int source, const char* ear, const ResponseTable& table) {
                         const ResponseMeasures measures =
                             measureResponse(gainsOf(table, set), set.format.rate_hz, set.format.faded_part);
                         std::array<char, 32> reverberation{"-"};
                         if (measures.reverberation_s) {
                             (void)std::snprintf(reverberation.data(), reverberation.size(), "%.3f s",
                                                 *measures.reverberation_s);
                         }
                         (void)std::snprintf(
                             line.data(), line.size(),
                             "  %-16s %6d  %-5s %8zu %7.3f %5.1f dB %4zu samples %5.2f ms %10s\n",
                             table.name.c_str(), source, ear, table.samples.size(), measures.peak,
                             measures.energy_db, measures.arrival_samples, measures.arrival_ms,
                             reverberation.data());
                         append();
                     });
    }
    return text;
}

std::string responsesJson(const ResponseChoice& choice) {
    using Json = nlohmann::ordered_json;
    Json array = Json::array();
    for (const ResponseSet* chosen : choice.sets) {
        forEachTable(*chosen, choice.source,
                     [&](const ResponseSet& set, int source, const char* ear, const ResponseTable& table) {
                         const ResponseMeasures measures =
                             measureResponse(gainsOf(table, set), set.format.rate_hz, set.format.faded_part);
                         array.push_back(
                             {{"set", set.name},
                              {"table", table.name},
                              {"source", source},
                              {"ear", ear},
                              {"rate_hz", set.format.rate_hz},
                              {"divisor", set.format.divisor},
                              {"samples", table.samples.size()},
                              {"peak", measures.peak},
                              {"energy_db", measures.energy_db},
                              {"arrival_samples", measures.arrival_samples},
                              {"arrival_ms", measures.arrival_ms},
                              {"reverberation_s",
                               measures.reverberation_s ? Json(*measures.reverberation_s) : Json(nullptr)}});
                     });
    }
    return array.dump() + "\n";
}

}  // namespace sonivex_tool
