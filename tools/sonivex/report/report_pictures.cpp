#include "report_pictures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "console.h"
#include "curve_points.h"
#include "panel.h"
#include "plot_axes.h"
#include "responses_measures.h"
#include "responses_tables.h"
#include "spectrogram.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::Axis;
using sonivex_plotting::Box;
using sonivex_plotting::Canvas;
using sonivex_plotting::Colour;
using sonivex_plotting::Curve;
using sonivex_plotting::fixed;
using sonivex_plotting::linearAxis;
using sonivex_plotting::Panel;
using sonivex_plotting::Spot;
using sonivex_plotting::Stroke;

constexpr int kWidth = 960;
constexpr double kTextSize = 14.0;
constexpr double kLeft = 62.0;
constexpr double kRight = 34.0;  // room for half of "10:00:00" below the end of the time axis
constexpr double kAbove = 26.0;
constexpr double kBelow = 46.0;
constexpr int kColumns = 600;  // of a curve, so that a page of long sounds stays small
constexpr double kLowestLoudness_lufs = -70.0;
constexpr std::array<Colour, 6> kVersionColours{sonivex_plotting::kGrey,       sonivex_plotting::kBlue,
                                                sonivex_plotting::kVermillion, sonivex_plotting::kGreen,
                                                sonivex_plotting::kPurple,     sonivex_plotting::kOrange};

Colour colourOf(std::size_t version) {
    if (version == 0) return kVersionColours.front();
    return kVersionColours.at(1 + (version - 1) % (kVersionColours.size() - 1));
}

Box boxOf(int width, int height) {
    return {kLeft, kAbove, width - kLeft - kRight, height - kAbove - kBelow};
}

std::string levelText(const std::optional<double>& level, const std::string& unit,
                      const std::string& missing) {
    return level ? fixed(*level, 1) + " " + unit : missing;
}

void drawCurve(Panel& panel, const std::vector<TimedValue>& values, double length_s, const Stroke& stroke) {
    for (const Curve& piece : piecesOf(values, length_s, kColumns)) {
        // A single value would be no line.
        if (piece.size() == 1) {
            panel.draw({piece.front(), {piece.front().x + length_s / kColumns, piece.front().y}}, stroke);
        } else {
            panel.draw(piece, stroke);
        }
    }
}

template <typename Value>
std::vector<TimedValue> valuesOf(const MeasuredVersion& version, Value value) {
    std::vector<TimedValue> values;
    values.reserve(version.loudness.readings.size());
    for (const LoudnessReading& reading : version.loudness.readings)
        values.push_back({reading.time_s, value(reading)});
    return values;
}

// All versions are drawn over the time of the longest.
double lengthOf(const MeasuredReport& report) {
    double length_s = 0.0;
    for (const MeasuredVersion& version : report.versions) length_s = std::max(length_s, version.length_s());
    return length_s;
}

void drawWaveform(Canvas& canvas, const MeasuredVersion& version, double length_s, const Colour& colour,
                  int height) {
    canvas.setTextSize(kTextSize);
    const Box box = boxOf(kWidth, height);
    Panel panel(canvas, box, "", clockAxis(length_s), linearAxis(-1.0, 1.0, 0.5, "sample"));
    std::vector<Spot> outline;
    const double stretch_s = version.stretch_s;
    // Each stretch reaches over its whole time, so that one of a single sample has a width.
    const auto corner = [&](std::size_t stretch, double value) {
        outline.push_back(panel.at({static_cast<double>(stretch) * stretch_s, value}));
    };
    // The widest sounds of a picture have more stretches than it has pixels.
    for (std::size_t i = 0; i < version.waveform.size(); ++i) {
        corner(i, version.waveform[i].high);
        if (version.waveform.size() < kColumns) corner(i + 1, version.waveform[i].high);
    }
    for (std::size_t i = version.waveform.size(); i-- > 0;) {
        if (version.waveform.size() < kColumns) corner(i + 1, version.waveform[i].low);
        corner(i, version.waveform[i].low);
    }
    // A silent sound has no area, so its line shows that it is there.
    canvas.area(outline, colour, box);
    canvas.polyline(outline, {.colour = colour, .width = 0.5}, box);
}

void drawSpectrogram(Canvas& canvas, const MeasuredVersion& version, double length_s, int height) {
    canvas.setTextSize(kTextSize);
    const Box box = boxOf(kWidth, height);
    const Axis time = clockAxis(length_s);
    const double image_s = version.column_s * version.spectrogram.width;
    // The last window of a sound reaches beyond its end.
    const double shown = std::min(1.0, image_s / time.high);
    const Axis frequency = sonivex_plotting::frequencyAxis(kLowestRow_hz, kHighestRow_hz);
    const Panel panel(canvas, box, "", time, frequency);
    canvas.image(version.spectrogram, {box.left, box.top, box.width * shown, box.height});
    canvas.outline(box, {.colour = sonivex_plotting::kFrame});
}

void drawLoudness(Canvas& canvas, const MeasuredVersion& version, double length_s, const Colour& colour,
                  int height) {
    canvas.setTextSize(kTextSize);
    const Box box = boxOf(kWidth, height);
    Panel panel(canvas, box, "", clockAxis(length_s),
                linearAxis(kLowestLoudness_lufs, 0.0, 10.0, "loudness (LUFS)"));
    const Stroke momentary{.colour = sonivex_plotting::kGrey, .width = 1.0};
    const Stroke short_term{.colour = colour, .width = 2.0};
    const Stroke integrated{.colour = sonivex_plotting::kInk, .width = 1.5};
    const Stroke gate{.colour = sonivex_plotting::kOrange, .width = 1.5, .is_dashed = true};
    drawCurve(panel, valuesOf(version, [](const LoudnessReading& r) { return r.momentary_lufs; }), length_s,
              momentary);
    drawCurve(panel, valuesOf(version, [](const LoudnessReading& r) { return r.short_term_lufs; }), length_s,
              short_term);
    const auto level = [&](const std::optional<double>& lufs, const Stroke& stroke) {
        if (lufs) panel.draw({{0.0, *lufs}, {clockAxis(length_s).high, *lufs}}, stroke);
    };
    level(version.loudness.integrated_lufs, integrated);
    level(version.loudness.relative_gate_lufs, gate);
    panel.legend({{"momentary", momentary},
                  {"short-term", short_term},
                  {"integrated", integrated},
                  {"relative gate", gate}});
}

void drawPeaks(Canvas& canvas, const MeasuredReport& report, double length_s, int height) {
    canvas.setTextSize(kTextSize);
    const Box box = boxOf(kWidth, height);
    Panel panel(canvas, box, "", clockAxis(length_s), linearAxis(-40.0, 5.0, 5.0, "true peak (dBTP)"));
    std::vector<sonivex_plotting::LegendEntry> legend;
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        const MeasuredVersion& version = report.versions[i];
        const Stroke stroke{.colour = colourOf(i), .width = 1.2};
        drawCurve(panel, valuesOf(version, [](const LoudnessReading& r) { return r.true_peak_dbtp; }),
                  length_s, stroke);
        legend.push_back({version.title, {.colour = stroke.colour, .width = 4.0}});
    }
    panel.legend(legend);
}

std::vector<TimedValue> gainOf(const MeasuredVersion& before, const MeasuredVersion& after) {
    const auto& in = before.loudness.readings;
    const auto& out = after.loudness.readings;
    std::vector<TimedValue> gain;
    for (std::size_t i = 0; i < std::min(in.size(), out.size()); ++i) {
        TimedValue& value = gain.emplace_back(TimedValue{in[i].time_s, std::nullopt});
        // Below the absolute gate there is no sound whose gain could be told.
        const bool is_sound =
            in[i].momentary_lufs && out[i].momentary_lufs && *in[i].momentary_lufs > kLowestLoudness_lufs;
        if (is_sound) value.value = *out[i].momentary_lufs - *in[i].momentary_lufs;
    }
    return gain;
}

void drawGains(Canvas& canvas, const MeasuredReport& report, double length_s, int height) {
    canvas.setTextSize(kTextSize);
    const Box box = boxOf(kWidth, height);
    double lowest = -6.0;
    double highest = 6.0;
    for (std::size_t i = 1; i < report.versions.size(); ++i) {
        for (const TimedValue& value : gainOf(report.versions.front(), report.versions[i])) {
            lowest = std::min(lowest, value.value.value_or(0.0));
            highest = std::max(highest, value.value.value_or(0.0));
        }
    }
    const double step = sonivex_plotting::niceStep(highest - lowest, 8.0);
    Panel panel(
        canvas, box, "", clockAxis(length_s),
        linearAxis(step * std::floor(lowest / step), step * std::ceil(highest / step), step, "change (dB)"));
    std::vector<sonivex_plotting::LegendEntry> legend;
    for (std::size_t i = 1; i < report.versions.size(); ++i) {
        const Stroke stroke{.colour = colourOf(i), .width = 1.5};
        drawCurve(panel, gainOf(report.versions.front(), report.versions[i]), length_s, stroke);
        legend.push_back({report.versions[i].title, {.colour = stroke.colour, .width = 4.0}});
    }
    panel.legend(legend);
}

void drawPresence(Canvas& canvas, const MeasuredVersion& version, double length_s, const Colour& colour,
                  int height) {
    canvas.setTextSize(kTextSize);
    Panel panel(canvas, boxOf(kWidth, height), "", clockAxis(length_s),
                linearAxis(0.0, 1.0, 0.2, "presence"));
    std::vector<TimedValue> values;
    for (const PresenceReading& reading : version.presence)
        values.push_back({reading.time_s, reading.presence});
    drawCurve(panel, values, length_s, {.colour = colour, .width = 1.2});
}

constexpr int kResponseWidth = 470;
constexpr int kResponseHeight = 240;

void drawResponse(Canvas& canvas, const ResponseSet& set, const MeasuredSource& source) {
    constexpr double kRightEarWidth = 3.0;  // beneath the left one, which is thinner
    canvas.setTextSize(kTextSize);
    Panel panel(canvas, boxOf(kResponseWidth, kResponseHeight), "", frequencyAxis(), magnitudeAxis());
    const ResponseSource& tables = set.sources.at(static_cast<std::size_t>(source.number) - 1);
    const auto draw = [&](const ResponseTable& table, const Stroke& stroke) {
        Curve curve;
        for (const SpectrumPoint& point : magnitude(gainsOf(table, set), set.format.rate_hz))
            curve.push_back({point.frequency_hz, point.gain_db});
        panel.draw(curve, stroke);
    };
    const Stroke left{.colour = sonivex_plotting::kBlue, .width = 1.4};
    const Stroke right{.colour = sonivex_plotting::kVermillion, .width = kRightEarWidth};
    draw(tables.right, right);
    draw(tables.left, left);
    panel.legend({{"left ear", left}, {"right ear", right}});
}

std::string describeLoudness(const MeasuredVersion& version) {
    return "Loudness of " + version.title + " over time. Integrated: " +
           levelText(version.loudness.integrated_lufs, "LUFS", "not measurable") +
           ". Relative gate: " + levelText(version.loudness.relative_gate_lufs, "LUFS", "none") +
           ". Range: " + levelText(version.loudness.range_lu, "LU", "not measurable") + ".";
}

PictureGroup waveforms(const MeasuredReport& report, double length_s) {
    constexpr int kHeight = 190;
    PictureGroup group{"waveforms",
                       "Waveforms",
                       "The lowest and highest samples of the stereo sound that is heard; full scale is 1.",
                       {}};
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        const MeasuredVersion& version = report.versions[i];
        group.pictures.push_back(
            {"waveform-" + version.file_name, version.title,
             "Waveform of " + version.title + ", " + clockTime(version.length_s()) + " long.", kWidth,
             kHeight, [&version, length_s, i](Canvas& canvas) {
                 drawWaveform(canvas, version, length_s, colourOf(i), kHeight);
             }});
    }
    return group;
}

PictureGroup spectrograms(const MeasuredReport& report, double length_s) {
    constexpr int kHeight = 270;
    PictureGroup group{"spectrograms",
                       "Spectrograms",
                       "The level at each time and frequency; the colours reach from " +
                           fixed(kLowestShown_db, 0) + " to " + fixed(kHighestShown_db, 0) +
                           " dB relative to a sine at full scale.",
                       {}};
    for (const MeasuredVersion& version : report.versions) {
        group.pictures.push_back(
            {"spectrogram-" + version.file_name, version.title, "Spectrogram of " + version.title + ".",
             kWidth, kHeight,
             [&version, length_s](Canvas& canvas) { drawSpectrogram(canvas, version, length_s, kHeight); }});
    }
    return group;
}

PictureGroup loudness(const MeasuredReport& report, double length_s) {
    constexpr int kHeight = 270;
    PictureGroup group{
        "loudness",
        "Loudness over time",
        "EBU R128: momentary (400 ms), short-term (3 s) and integrated loudness. Sound below the "
        "relative gate does not count for the integrated loudness.",
        {}};
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        const MeasuredVersion& version = report.versions[i];
        group.pictures.push_back({"loudness-" + version.file_name, version.title, describeLoudness(version),
                                  kWidth, kHeight, [&version, length_s, i](Canvas& canvas) {
                                      drawLoudness(canvas, version, length_s, colourOf(i == 0 ? 4 : i),
                                                   kHeight);
                                  }});
    }
    return group;
}

PictureGroup changes(const MeasuredReport& report, double length_s) {
    constexpr int kHeight = 290;
    PictureGroup group{"changes",
                       "Gain and true peaks over time",
                       "The gain is the change of the momentary loudness from the original to each version.",
                       {}};
    group.pictures.push_back(
        {"gain", "gain", "Change of momentary loudness by each version, over time.", kWidth, kHeight,
         [&report, length_s](Canvas& canvas) { drawGains(canvas, report, length_s, kHeight); }});
    std::string peaks = "True peaks of each 100 ms, over time. Highest:";
    for (const MeasuredVersion& version : report.versions)
        peaks +=
            " " + version.title + " " + levelText(version.loudness.true_peak_dbtp, "dBTP", "silent") + ";";
    group.pictures.push_back(
        {"true-peaks", "true peaks of each 100 ms", peaks, kWidth, kHeight,
         [&report, length_s](Canvas& canvas) { drawPeaks(canvas, report, length_s, kHeight); }});
    return group;
}

PictureGroup presence(const MeasuredReport& report, double length_s) {
    constexpr int kHeight = 210;
    PictureGroup group{"presence",
                       "Presence over time",
                       "How far dialogue enhancement is open, from 0 (closed) to 1, as its output shows.",
                       {}};
    for (std::size_t i = 1; i < report.versions.size(); ++i) {
        const MeasuredVersion& version = report.versions[i];
        if (version.presence.empty()) continue;
        group.pictures.push_back({"presence-" + version.file_name, version.title,
                                  "Presence of " + version.title + " over time.", kWidth, kHeight,
                                  [&version, length_s, i](Canvas& canvas) {
                                      drawPresence(canvas, version, length_s, colourOf(i), kHeight);
                                  }});
    }
    return group;
}

PictureGroup responses(const MeasuredReport& report) {
    PictureGroup group{
        "responses", "Responses of surround", "The magnitude by which each ear hears each loudspeaker.", {}};
    std::vector<const ResponseSet*> drawn;
    for (const MeasuredVersion& version : report.versions) {
        for (const MeasuredSet& measured : version.responses) {
            const ResponseSet& set = *measured.set;
            if (std::find(drawn.begin(), drawn.end(), &set) != drawn.end()) continue;
            drawn.push_back(&set);
            for (const MeasuredSource& source : measured.sources) {
                group.pictures.push_back(
                    {"response-" + set.name + "-" + std::to_string(source.number),
                     set.name + ", " + source.loudspeaker,
                     "Magnitude of the responses of the loudspeaker " + source.loudspeaker + " in the set " +
                         set.name + " at both ears.",
                     kResponseWidth, kResponseHeight,
                     [&set, &source](Canvas& canvas) { drawResponse(canvas, set, source); }});
            }
        }
    }
    return group;
}

}  // namespace

std::vector<PictureGroup> picturesOf(const MeasuredReport& report) {
    const double length_s = lengthOf(report);
    std::vector<PictureGroup> groups{waveforms(report, length_s), spectrograms(report, length_s),
                                     loudness(report, length_s),  changes(report, length_s),
                                     presence(report, length_s),  responses(report)};
    std::erase_if(groups, [](const PictureGroup& group) { return group.pictures.empty(); });
    return groups;
}

std::vector<std::string> certainPictureNames(const std::vector<std::string>& versions) {
    std::vector<std::string> names{"gain", "true-peaks"};
    for (const std::string& version : versions) {
        for (const char* kind : {"waveform-", "spectrogram-", "loudness-"}) names.push_back(kind + version);
    }
    return names;
}

}  // namespace sonivex_tool
