#include "responses_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "measured_sets.h"
#include "panel.h"
#include "plot_axes.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::Axis;
using sonivex_plotting::Box;
using sonivex_plotting::Canvas;
using sonivex_plotting::Colour;
using sonivex_plotting::Curve;
using sonivex_plotting::fixed;
using sonivex_plotting::LegendEntry;
using sonivex_plotting::Marker;
using sonivex_plotting::Panel;
using sonivex_plotting::Stroke;

constexpr std::array<Colour, 2> kEarColours{sonivex_plotting::kBlue, sonivex_plotting::kVermillion};
constexpr std::array<const char*, 2> kEarNames{"left ear", "right ear"};
constexpr Colour kRatioColour = sonivex_plotting::kGreen;
constexpr Colour kDirectColour = sonivex_plotting::kPurple;
constexpr Colour kWholeColour = sonivex_plotting::kInk;
constexpr double kCurveWidth = 1.8;
// The left ear's curve lies on top. Where both are equal, the right ear's shows on either side of it.
constexpr std::array<double, 2> kEarWidths{1.4, 3.0};

// Distance of the words from the marks in the impulse panel.
constexpr double kBeforeWords_ms = 0.25;

constexpr double kTitleSize = 26.0;
constexpr double kTextSize = 16.0;
constexpr double kTitleBase = 42.0;
constexpr double kSubtitleBase = 74.0;

// The panels stand in three rows and two columns, a wide and a narrow one.
enum class Column { Wide, Narrow };

Box boxOf(int row, Column column) {
    constexpr double kFirstTop = 135.0;
    constexpr double kPitch = 395.0;
    constexpr double kHeight = 285.0;
    const double top = kFirstTop + row * kPitch;
    if (column == Column::Wide) return {90.0, top, 730.0, kHeight};
    return {930.0, top, 440.0, kHeight};
}

// The panels show one response for each curve, so a response that both ears share appears once.
struct Subject {
    const ResponseSet& set;
    const ResponseSource& tables;
    std::vector<std::vector<double>> ears;
    MeasuredSource measured;

    double rate_hz() const { return set.format.rate_hz; }
    double length_ms() const { return static_cast<double>(ears.front().size()) / rate_hz() * 1000.0; }
};

Subject subjectOf(const ResponseSet& set, int source) {
    const ResponseSource& tables = set.sources.at(static_cast<std::size_t>(source) - 1);
    Subject subject{set, tables, {gainsOf(tables.left, set)}, measureSourceOf(set, source)};
    if (!isSharedByBothEars(tables)) subject.ears.push_back(gainsOf(tables.right, set));
    return subject;
}

// Draws a curve for each ear, the left one on top.
void drawEars(Panel& panel, const Subject& subject,
              const std::function<Curve(const std::vector<double>&)>& curve) {
    for (std::size_t ear = subject.ears.size(); ear-- > 0;) {
        panel.draw(curve(subject.ears[ear]), {.colour = kEarColours.at(ear), .width = kEarWidths.at(ear)});
    }
}

void drawHeading(Canvas& canvas, const Subject& subject) {
    canvas.setTextSize(kTitleSize);
    canvas.text(plotTitle(subject.set, subject.measured.number), {boxOf(0, Column::Wide).left, kTitleBase},
                Anchor::Start);
    canvas.setTextSize(kTextSize);
    std::string line = subject.set.use + "; ";
    for (const MeasuredTable& table : subject.measured.tables) {
        if (&table != &subject.measured.tables.front()) line += ", ";
        line += (table.ear == "both" ? "both ears" : table.ear + " ear") + " " + table.name;
    }
    if (!subject.set.has_crosstalk) line += "; this source alone, though an ear hears both sources at once";
    canvas.text(line, {boxOf(0, Column::Wide).left, kSubtitleBase}, Anchor::Start);
}

void addEarLegend(Panel& panel, const Subject& subject) {
    std::vector<LegendEntry> entries;
    for (std::size_t ear = 0; ear < subject.ears.size(); ++ear) {
        entries.push_back({subject.ears.size() == 1 ? "both ears" : kEarNames.at(ear),
                           {.colour = kEarColours.at(ear), .width = 4.0}});
    }
    panel.legend(entries);
}

// Marks the delay from the arrival at the first ear on, below all curves.
void markDelay(Canvas& canvas, const Panel& panel, const Subject& subject) {
    constexpr double kHeight = -0.5;  // as a gain, like the next two
    constexpr double kLinesFrom = -0.1;
    constexpr double kLinesTo = -0.6;
    constexpr double kArrowLength_ms = 0.9;
    if (!subject.measured.figures.delay_us) return;
    const double delay_us = *subject.measured.figures.delay_us;
    const std::vector<MeasuredTable>& tables = subject.measured.tables;
    const double from_ms = std::min(tables.front().figures.arrival_ms, tables.back().figures.arrival_ms);
    const double to_ms = from_ms + std::abs(delay_us) / 1000.0;
    const std::size_t first = delay_us >= 0.0 ? 0 : 1;
    const auto edge = [&](double time_ms, std::size_t ear) {
        canvas.line(panel.at({time_ms, kLinesFrom}), panel.at({time_ms, kLinesTo}),
                    {.colour = kEarColours.at(ear), .width = 1.2, .is_dashed = true});
    };
    edge(from_ms, first);
    std::string words = "no delay between the ears";
    if (delay_us != 0.0) {
        edge(to_ms, 1 - first);
        canvas.arrow(panel.at({to_ms + kArrowLength_ms, kHeight}), panel.at({to_ms, kHeight}), {});
        words = std::string(kEarNames.at(first)) + " first by " + fixed(std::abs(delay_us), 0) +
                " µs (below 1.5 kHz)";
    }
    canvas.label(words, panel.at({to_ms + kArrowLength_ms + kBeforeWords_ms, kHeight}), Anchor::Start);
}

// Marks the energies of the direct sound, each as the gain of a single sample with that energy.
void markLevels(Canvas& canvas, const Panel& panel, const Subject& subject) {
    constexpr double kFrom_ms = 3.2;
    constexpr double kTo_ms = 5.2;
    const std::optional<double>& difference_db = subject.measured.figures.level_difference.direct_db;
    if (!difference_db) return;
    const std::array<double, 2> gains = {
        std::sqrt(directEnergy(subject.ears.at(0), subject.set.format.rate_hz)),
        std::sqrt(directEnergy(subject.ears.at(1), subject.set.format.rate_hz))};
    for (const std::size_t ear : {1U, 0U}) {
        canvas.line(panel.at({kFrom_ms, gains.at(ear)}), panel.at({kTo_ms, gains.at(ear)}),
                    {.colour = kEarColours.at(ear), .width = 2.0 * kEarWidths.at(ear)});
    }
    const std::string rounded = fixed(std::abs(*difference_db), 1);
    const std::size_t louder = *difference_db >= 0.0 ? 0 : 1;
    std::string words = "direct sound equally loud in both ears";
    if (rounded != "0.0") {
        const double middle_ms = (kFrom_ms + kTo_ms) / 2.0;
        canvas.arrow(panel.at({middle_ms, gains.at(1 - louder)}), panel.at({middle_ms, gains.at(louder)}),
                     {});
        words = "direct sound louder at the " + std::string(kEarNames.at(louder)) + " by " + rounded + " dB";
    }
    canvas.label(words, panel.at({kTo_ms + kBeforeWords_ms, gains.at(louder)}), Anchor::Start);
}

void drawImpulses(Canvas& canvas, const Subject& subject) {
    Panel panel(canvas, boxOf(0, Column::Wide),
                "Impulse response, first " + fixed(kImpulseShown_ms, 0) + " ms", impulseTimeAxis(),
                gainAxis());
    addEarLegend(panel, subject);
    drawEars(panel, subject, [&](const std::vector<double>& ear) {
        Curve curve;
        for (std::size_t n = 0; n < ear.size(); ++n) {
            const double time_ms = static_cast<double>(n) / subject.rate_hz() * 1000.0;
            if (time_ms > kImpulseShown_ms) break;
            curve.push_back({time_ms, ear[n]});
        }
        return curve;
    });
    if (subject.ears.size() == 1) return;
    markDelay(canvas, panel, subject);
    markLevels(canvas, panel, subject);
}

void drawEnvelopes(Canvas& canvas, const Subject& subject) {
    Panel panel(canvas, boxOf(0, Column::Narrow), "Envelope, largest gain in each 0.5 ms",
                timeAxis(subject.length_ms()), envelopeAxis());
    drawEars(panel, subject, [&](const std::vector<double>& ear) {
        Curve curve;
        for (const EnvelopePoint& point : envelope(ear, subject.set.format.rate_hz)) {
            curve.push_back({point.time_ms, point.level_db});
        }
        return curve;
    });
}

void drawMagnitudes(Canvas& canvas, const Subject& subject) {
    Panel panel(canvas, boxOf(1, Column::Wide), "Magnitude, averaged over 1/12 octave", frequencyAxis(),
                magnitudeAxis());
    drawEars(panel, subject, [&](const std::vector<double>& ear) {
        Curve curve;
        for (const SpectrumPoint& point : magnitude(ear, subject.set.format.rate_hz)) {
            curve.push_back({point.frequency_hz, point.gain_db});
        }
        return curve;
    });
}

void drawDecays(Canvas& canvas, const Subject& subject) {
    double reference = 0.0;
    for (const std::vector<double>& ear : subject.ears) reference = std::max(reference, energyOf(ear));
    std::string title = "Energy decay; reverberation";
    for (const MeasuredTable& table : subject.measured.tables) {
        const std::optional<double>& time_s = table.figures.reverberation_s;
        title += (&table == &subject.measured.tables.front() ? " " : ", ") +
                 (time_s ? fixed(*time_s, 2) + " s" : "none") + (table.ear == "both" ? "" : " " + table.ear);
    }
    Panel panel(canvas, boxOf(1, Column::Narrow), title, timeAxis(subject.length_ms()), decayAxis());
    if (reference == 0.0) return;
    drawEars(panel, subject, [&](const std::vector<double>& ear) {
        Curve curve;
        const std::vector<double> decay = energyDecay_db(ear, reference);
        for (std::size_t n = 0; n < decay.size(); ++n) {
            curve.push_back({static_cast<double>(n) / subject.rate_hz() * 1000.0, decay[n]});
        }
        return curve;
    });
}

// One figure by octave, and its look.
struct OctaveCurve {
    std::string name;
    Colour colour;
    Marker marker;
    bool is_dashed;
    std::function<std::optional<double>(const OctaveMeasures&)> value;
};

void drawOctaves(Canvas& canvas, const Subject& subject, const Box& box, const std::string& title, Axis axis,
                 const std::vector<OctaveCurve>& curves) {
    Panel panel(canvas, box, title, octaveAxis(), std::move(axis));
    std::vector<LegendEntry> entries;
    for (const OctaveCurve& each : curves) {
        Curve curve;
        for (std::size_t octave = 0; octave < kOctaves_hz.size(); ++octave) {
            const std::optional<double> value = each.value(subject.measured.figures.octaves.at(octave));
            if (value) curve.push_back({static_cast<double>(kOctaves_hz.at(octave)), *value});
        }
        if (curve.empty()) continue;
        const Stroke look{.colour = each.colour, .width = kCurveWidth, .is_dashed = each.is_dashed};
        panel.draw(curve, look);
        panel.mark(curve, each.marker, each.colour);
        entries.push_back({each.name, look, each.marker});
    }
    if (curves.size() > 1) panel.legend(entries);
}

void drawOctaveLevels(Canvas& canvas, const Subject& subject) {
    const Box box = boxOf(2, Column::Wide);
    // The legend takes the place of the title, which stands in a line of its own above it.
    canvas.text("Direct-to-reverberant ratio, and level of the left ear over the right",
                {box.left, box.top - 2.2 * kTextSize}, Anchor::Start);
    drawOctaves(canvas, subject, box, "", octaveLevelAxis(),
                {{"direct-to-reverberant", kRatioColour, Marker::Dot, false,
                  [](const OctaveMeasures& octave) { return octave.direct_to_reverberant_db; }},
                 {"left/right, direct sound", kDirectColour, Marker::Square, false,
                  [](const OctaveMeasures& octave) { return octave.level_difference.direct_db; }},
                 {"left/right, whole response", kWholeColour, Marker::Triangle, true,
                  [](const OctaveMeasures& octave) { return octave.level_difference.whole_db; }}});
}

void drawCorrelations(Canvas& canvas, const Subject& subject) {
    const Box box = boxOf(2, Column::Narrow);
    drawOctaves(canvas, subject, box, "Correlation of the ears, first 80 ms", correlationAxis(),
                {{"", kWholeColour, Marker::Dot, false,
                  [](const OctaveMeasures& octave) { return octave.early_correlation; }}});
    if (subject.ears.size() > 1) return;
    canvas.text("one response for both ears", {box.left + box.width / 2.0, box.top + box.height / 2.0},
                Anchor::Middle);
}

}  // namespace

std::string plotTitle(const ResponseSet& set, int source) {
    const std::string number = std::to_string(source);
    const std::string& loudspeaker = set.sources.at(static_cast<std::size_t>(source) - 1).loudspeaker;
    return set.name + ", source " + number + (loudspeaker.empty() ? "" : ": " + loudspeaker);
}

std::string plotResponses(const ResponseSet& set, int source, sonivex_plotting::PictureFormat format) {
    const Subject subject = subjectOf(set, source);
    return sonivex_plotting::pictureFile(format, kPlotWidth, kPlotHeight, plotTitle(set, source),
                                         [&](Canvas& canvas) {
                                             drawHeading(canvas, subject);
                                             drawImpulses(canvas, subject);
                                             drawEnvelopes(canvas, subject);
                                             drawMagnitudes(canvas, subject);
                                             drawDecays(canvas, subject);
                                             drawOctaveLevels(canvas, subject);
                                             drawCorrelations(canvas, subject);
                                         });
}

}  // namespace sonivex_tool
