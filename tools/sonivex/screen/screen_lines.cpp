#include "screen_lines.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "console.h"
#include "fitted_text.h"
#include "level_bar.h"

namespace sonivex_tool {
namespace {

constexpr double kLowestBar_db = -60.0;
constexpr double kHighestBar_db = 0.0;
constexpr int kMeterTextColumns = 54;  // of a meter's row beside its bar
constexpr int kShortestBarColumns = 8;
constexpr int kLongestBarColumns = 60;
constexpr double kRinging_s = 1.0;  // by which an effect may ring out after the end of a file

constexpr std::array<const char*, 3> kHelp = {
    "e effect on/off   n next effect   t type   m mode   v/V voice   l same loudness",
    "left/right 5 s    pageup/pagedown 60 s    space pause    +/- volume",
    "r retry the filter    q quit",
};

std::string number(double value, int decimals) {
    std::array<char, 48> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

std::string padded(const std::string& text, size_t columns) {
    return text.size() >= columns ? text : std::string(columns - text.size(), ' ') + text;
}

std::string levelText(std::optional<double> level, const char* unit) {
    return padded(level ? number(*level, 1) : "-", 6) + " " + unit;
}

std::string meterLine(const std::string& name, const MeterRow& row, bool is_heard, int columns) {
    const int bar = std::clamp(columns - kMeterTextColumns, 0, kLongestBarColumns);
    std::string line = std::string(is_heard ? "> " : "  ") + name + levelText(row.short_term_lufs, "LUFS") +
                       "  peak " + levelText(row.peak_dbfs, "dBFS") + "  gain " +
                       padded(number(row.gain_db, 1), 5) + " dB ";
    if (bar >= kShortestBarColumns)
        line += " " + levelBar(row.short_term_lufs, row.peak_dbfs, kLowestBar_db, kHighestBar_db, bar - 1);
    return line;
}

// Returns the length, or nothing once the position has passed it: a file may state its first part's length.
std::optional<double> credibleLength_s(const ScreenContents& contents) {
    if (!contents.length_s || contents.position_s >= *contents.length_s + kRinging_s) return std::nullopt;
    return std::max(*contents.length_s, contents.position_s);
}

std::string positionText(const ScreenContents& contents) {
    std::string text = clockTime(contents.position_s);
    if (const auto length_s = credibleLength_s(contents)) text += " / " + clockTime(*length_s);
    return text;
}

std::string percent(double share) {
    return number(100.0 * share, 1) + " %";
}

std::string positionLine(const ScreenContents& contents, int columns) {
    std::string line = positionText(contents) + (contents.is_paused ? "  paused" : "");
    const int bar = std::min(columns - static_cast<int>(line.size()) - 2, kLongestBarColumns);
    const std::optional<double> length_s = credibleLength_s(contents);
    if (length_s && *length_s > 0.0 && bar >= kShortestBarColumns)
        line += "  " + levelBar(contents.position_s, std::nullopt, 0.0, *length_s, bar);
    return line;
}

}  // namespace

std::vector<std::string> screenLines(const ScreenContents& contents, int columns, int rows) {
    if (columns <= 0 || rows <= 0) return {};
    const std::string matching = contents.is_matching ? "same loudness" : "loudness as it is (l matches it)";
    std::vector<std::string> lines = {
        positionLine(contents, columns),
        std::string(contents.hears_effect ? "EFFECT    " : "ORIGINAL  ") + contents.effect + "   " + matching,
        meterLine("original ", contents.original, !contents.hears_effect, columns),
        meterLine("effect   ", contents.processed, contents.hears_effect, columns),
        "  output peak" + levelText(contents.output_peak_dbfs, "dBFS") + "   volume " +
            number(contents.volume_db, 0) + " dB   clipped " + std::to_string(contents.clipped_samples),
        "  filter " + percent(contents.cpu_share) + " of a processor   gaps " + std::to_string(contents.gaps),
        "  guard: " + contents.guard,
        contents.title,
        contents.stream + "   " + contents.card,
    };
    const size_t room = static_cast<size_t>(rows);
    if (lines.size() + kHelp.size() < room) {
        lines.emplace_back();
        lines.insert(lines.end(), kHelp.begin(), kHelp.end());
    }
    if (lines.size() + 1 < room && !contents.events.empty()) {
        lines.emplace_back();
        const size_t shown = std::min(contents.events.size(), room - lines.size());
        lines.insert(lines.end(), contents.events.end() - static_cast<ptrdiff_t>(shown),
                     contents.events.end());
    }
    if (lines.size() > room) lines.resize(room);
    for (std::string& line : lines) line = fittedText(line, columns);
    return lines;
}

std::string statusLine(const ScreenContents& contents) {
    return positionText(contents) + (contents.is_paused ? " paused" : "") +
           (contents.hears_effect ? "  effect: " : "  original; effect: ") + contents.effect + "  original" +
           levelText(contents.original.short_term_lufs, "LUFS") + "  effect" +
           levelText(contents.processed.short_term_lufs, "LUFS") + "  filter " + percent(contents.cpu_share) +
           "  gaps " + std::to_string(contents.gaps) + "  guard: " + contents.guard;
}

}  // namespace sonivex_tool
