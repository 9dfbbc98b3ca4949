#include "report_tables.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "axis.h"
#include "console.h"
#include "element_canvas.h"
#include "responses_tables.h"
#include "source_measures.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::escapedText;
using sonivex_plotting::fixed;
using Row = std::vector<std::string>;

constexpr char kNone[] = "–";

std::string cell(const std::optional<double>& value, int decimals = 1) {
    return value ? fixed(*value, decimals) : kNone;
}

// The first cell of each row is its heading.
std::string table(const std::string& caption, const Row& head, const std::vector<Row>& rows) {
    std::string html = "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"" +
                       escapedText(caption) + "\"><table>\n<caption>" + escapedText(caption) +
                       "</caption>\n<thead><tr>";
    for (const std::string& name : head) html += "<th scope=\"col\">" + escapedText(name) + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (const Row& row : rows) {
        html += "<tr><th scope=\"row\">" + escapedText(row.front()) + "</th>";
        for (auto text = row.begin() + 1; text != row.end(); ++text)
            html += "<td>" + escapedText(*text) + "</td>";
        html += "</tr>\n";
    }
    return html + "</tbody>\n</table></div>\n";
}

std::string tableOf(const MeasuredSet& set) {
    Row head{"loudspeaker", "delay (µs)", "level difference (dB)"};
    for (const int octave : kOctaves_hz) head.push_back(octaveName(octave) + " Hz");
    std::vector<Row> rows;
    for (const MeasuredSource& source : set.sources) {
        Row row{source.loudspeaker, cell(source.figures.delay_us, 0),
                cell(source.figures.level_difference.whole_db)};
        for (const OctaveMeasures& octave : source.figures.octaves)
            row.push_back(cell(octave.direct_to_reverberant_db));
        rows.push_back(std::move(row));
    }
    return table("Set " + set.set->name +
                     ": delay and level of the left ear over the right one, and the ratio of "
                     "direct to reverberant sound (dB) by octave",
                 head, rows);
}

}  // namespace

std::string summaryTable(const MeasuredReport& report) {
    std::vector<Row> rows;
    for (const MeasuredVersion& version : report.versions) {
        rows.push_back({version.title, layoutName(version.spec.layout), clockTime(version.length_s()),
                        cell(version.loudness.integrated_lufs), cell(version.loudness.range_lu),
                        cell(version.loudness.relative_gate_lufs), cell(version.loudness.true_peak_dbtp),
                        cell(meanPresence(version.presence), 2),
                        report.has_sound ? fixed(version.matching_gain_db, 1) : std::string(kNone)});
    }
    std::string html =
        "<section id=\"figures\">\n<h2>Figures</h2>\n" +
        table("Loudness and peaks of the whole sound",
              {"version", "layout", "length", "integrated (LUFS)", "range (LU)", "relative gate (LUFS)",
               "true peak (dBTP)", "mean presence", "player's gain (dB)"},
              rows);
    if (!report.versions.front().loudness.integrated_lufs)
        html +=
            "<p class=\"explanation\">The original has no measurable loudness: it is silent, or shorter than "
            "the "
            "0.4 s that the measurement needs.</p>\n";
    std::string conversions;
    for (const MeasuredVersion& version : report.versions) {
        for (const std::string& line : version.conversions)
            conversions += "<li>" + escapedText(version.title + ": " + line) + "</li>\n";
    }
    if (!conversions.empty()) html += "<ul>\n" + conversions + "</ul>\n";
    return html + "</section>\n";
}

std::string responseTables(const MeasuredReport& report) {
    std::string html;
    std::vector<const ResponseSet*> shown;
    for (const MeasuredVersion& version : report.versions) {
        for (const MeasuredSet& set : version.responses) {
            if (std::find(shown.begin(), shown.end(), set.set) != shown.end()) continue;
            shown.push_back(set.set);
            html += tableOf(set);
        }
    }
    return html;
}

std::string guardTable(const MeasuredReport& report) {
    std::vector<Row> rows;
    std::string events;
    for (const MeasuredVersion& version : report.versions) {
        if (version.choice.empty()) continue;
        rows.push_back({version.title, std::to_string(version.calls), std::to_string(version.dropped_calls),
                        std::to_string(version.bypassed_calls), std::to_string(version.guard_events.size())});
        for (const GuardEvent& event : version.guard_events) {
            events += "<li>" +
                      escapedText(clockTime(event.time_s) + " " + version.title + ": the filter " +
                                  (event.is_bypassed ? "passes the sound through from here on"
                                                     : "processes again from here on")) +
                      "</li>\n";
        }
    }
    return "<section id=\"guard\">\n<h2>Load guard</h2>\n" +
           table("Calls of the filter", {"version", "calls", "dropped", "bypassed", "events"}, rows) +
           (events.empty() ? "<p class=\"explanation\">The load guard has reported nothing.</p>\n"
                           : "<ul>\n" + events + "</ul>\n") +
           "</section>\n";
}

}  // namespace sonivex_tool
