#include <algorithm>
#include <cmath>
#include <functional>

#include "axis.h"
#include "responses_report.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::fixed;

constexpr std::size_t kOctaveNameWidth = 33;
constexpr std::size_t kOctaveWidth = 8;

std::string padding(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ');
}

std::string toTheLeft(const std::string& text, std::size_t width) {
    return text + padding(text, width);
}

std::string toTheRight(const std::string& text, std::size_t width) {
    return padding(text, width) + text;
}

std::string figure(const std::optional<double>& value, int decimals, const std::string& unit = "") {
    return value && std::isfinite(*value) ? fixed(*value, decimals) + unit : "-";
}

std::string nameOf(const MeasuredSource& source) {
    const std::string number = std::to_string(source.number);
    return source.loudspeaker.empty() ? number : number + " " + source.loudspeaker;
}

std::string firstEar(const SourceMeasures& figures) {
    if (!figures.delay_us || !std::isfinite(*figures.delay_us)) return "-";
    const double delay_us = std::round(*figures.delay_us);
    if (delay_us == 0.0) return "neither";
    return (delay_us > 0.0 ? "left by " : "right by ") + fixed(std::abs(delay_us), 0) + " us";
}

// One line of the list of tables. The texts are the columns.
std::string tableLine(const std::string& source, const std::string& ear, const std::string& table,
                      const std::string& samples, const std::string& peak, const std::string& energy,
                      const std::string& arrival, const std::string& reverberation,
                      const std::string& first_ear) {
    std::string line = "  " + toTheLeft(source, 19) + toTheLeft(ear, 7) + toTheLeft(table, 17) +
                       toTheRight(samples, 7) + toTheRight(peak, 7) + toTheRight(energy, 10) +
                       toTheRight(arrival, 13) + toTheRight(reverberation, 10) + "   " + first_ear;
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

std::string tableLines(const MeasuredSource& source) {
    std::string lines;
    for (const MeasuredTable& table : source.tables) {
        const ResponseMeasures& figures = table.figures;
        const bool is_first = lines.empty();
        lines += tableLine(
            is_first ? nameOf(source) : "", table.ear, table.name, std::to_string(table.samples),
            fixed(figures.peak, 3), figure(figures.energy_db, 1, " dB"),
            std::to_string(figures.arrival_samples) + toTheRight(fixed(figures.arrival_ms, 2), 6) + " ms",
            figure(figures.reverberation_s, 3, " s"), is_first ? firstEar(source.figures) : "");
    }
    return lines;
}

using Choose = std::function<std::optional<double>(const OctaveMeasures&)>;

std::string octaveLine(const std::string& name, const SourceMeasures& figures, int decimals,
                       const Choose& choose) {
    std::string line = toTheLeft("    " + name, kOctaveNameWidth);
    for (const OctaveMeasures& octave : figures.octaves) {
        line += toTheRight(figure(choose(octave), decimals), kOctaveWidth);
    }
    return line + "\n";
}

// Returns a line for each source with one figure by octave.
std::string octaveLines(const MeasuredSet& set, const std::string& title, int decimals,
                        const Choose& choose) {
    std::string lines = "  " + title + "\n";
    for (const MeasuredSource& source : set.sources) {
        lines += octaveLine(nameOf(source), source.figures, decimals, choose);
    }
    return lines;
}

std::string setText(const MeasuredSet& measured) {
    const ResponseSet& set = *measured.set;
    std::string text = set.name + ": " + set.use + "; " + std::to_string(set.format.rate_hz) +
                       " Hz, sample = gain x " + fixed(set.format.divisor, 0) + "\n";
    text +=
        tableLine("source", "ear", "table", "samples", "peak", "energy", "arrival", "reverb", "first ear");
    for (const MeasuredSource& source : measured.sources) text += tableLines(source);
    text += "\n" + toTheLeft("  octave (Hz)", kOctaveNameWidth);
    for (const int centre_hz : kOctaves_hz) text += toTheRight(octaveName(centre_hz), kOctaveWidth);
    text += "\n";
    const auto ratio = [](const OctaveMeasures& octave) { return octave.direct_to_reverberant_db; };
    text += octaveLines(measured, "direct-to-reverberant ratio (dB)", 1, ratio);
    if (measured.as_heard) text += octaveLine("both, as each ear hears them", *measured.as_heard, 1, ratio);
    if (isSharedByBothEars(set.sources.front())) return text;
    text += octaveLines(measured,
                        "interaural level difference of the direct sound (dB, positive: left ear louder)", 1,
                        [](const OctaveMeasures& octave) { return octave.level_difference.direct_db; });
    text += octaveLines(measured,
                        "interaural level difference of the whole response (dB, positive: left ear louder)",
                        1, [](const OctaveMeasures& octave) { return octave.level_difference.whole_db; });
    text += octaveLines(measured, "early interaural correlation", 2,
                        [](const OctaveMeasures& octave) { return octave.early_correlation; });
    return text;
}

}  // namespace

std::string responsesText(const std::vector<MeasuredSet>& sets) {
    std::string text;
    for (const MeasuredSet& set : sets) text += (text.empty() ? "" : "\n") + setText(set);
    return text;
}

}  // namespace sonivex_tool
