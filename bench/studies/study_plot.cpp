#include "study_plot.h"

#include <array>

#include "panel.h"
#include "png_file.h"

namespace study {
namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::Axis;
using sonivex_plotting::Canvas;
using sonivex_plotting::Colour;
using sonivex_plotting::Curve;
using sonivex_plotting::Marker;

constexpr std::array<Colour, 7> kCurves{sonivex_plotting::kBlue,       sonivex_plotting::kSkyBlue,
                                        sonivex_plotting::kVermillion, sonivex_plotting::kOrange,
                                        sonivex_plotting::kGreen,      sonivex_plotting::kPurple,
                                        sonivex_plotting::kInk};

constexpr int kWidth = 900;
constexpr double kLeft = 80.0;
constexpr double kPlotWidth = kWidth - kLeft - 30.0;
constexpr double kTitleBase = 36.0;
constexpr double kFirstLegendLine = 66.0;
constexpr double kLegendLine = 24.0;
constexpr double kAboveFirstPanel = 25.0;
constexpr double kPanelHeight = 230.0;
constexpr double kPanelPitch = 310.0;
constexpr double kTitleSize = 20.0;
constexpr double kTextSize = 16.0;

double headingHeight(const Figure& figure) {
    return kFirstLegendLine + kLegendLine * static_cast<double>(figure.names.size()) + kAboveFirstPanel;
}

void drawHeading(Canvas& canvas, const Figure& figure) {
    canvas.setTextSize(kTitleSize);
    canvas.text(figure.title, {kLeft, kTitleBase}, Anchor::Start);
    canvas.setTextSize(kTextSize);
    double base = kFirstLegendLine;
    for (std::size_t curve = 0; curve < figure.names.size(); ++curve, base += kLegendLine) {
        canvas.line({kLeft, base - 5.0}, {kLeft + 36.0, base - 5.0},
                    {.colour = kCurves.at(curve % kCurves.size()), .width = 4.0});
        canvas.text(figure.names[curve], {kLeft + 48.0, base}, Anchor::Start);
    }
}

void drawPanel(Canvas& canvas, const Figure& figure, const Panel& panel, double top) {
    Axis y = panel.y;
    y.label.clear();
    sonivex_plotting::Panel drawn(canvas, {kLeft, top, kPlotWidth, kPanelHeight}, panel.y.label, figure.x, y);
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
        Curve curve;
        for (std::size_t x = 0; x < figure.x_values.size(); ++x) {
            curve.push_back({figure.x_values[x], panel.curves[i][x]});
        }
        const Colour& colour = kCurves.at(i % kCurves.size());
        drawn.draw(curve, {.colour = colour, .width = 2.0});
        drawn.mark(curve, Marker::Dot, colour);
    }
}

}  // namespace

bool writePng(const Figure& figure, const std::string& path) {
    const double height =
        headingHeight(figure) + kPanelPitch * static_cast<double>(figure.panels.size()) - 15.0;
    return writePng(kWidth, static_cast<int>(height), figure.title, path, [&](Canvas& canvas) {
        drawHeading(canvas, figure);
        double top = headingHeight(figure);
        for (const Panel& panel : figure.panels) {
            drawPanel(canvas, figure, panel, top);
            top += kPanelPitch;
        }
    });
}

}  // namespace study
