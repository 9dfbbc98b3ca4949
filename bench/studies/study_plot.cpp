#include "study_plot.h"

#include <cairo.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

namespace study {
namespace {

struct Colour {
    double red, green, blue;
};
constexpr Colour kInk{0.13, 0.13, 0.15};
constexpr Colour kGrid{0.87, 0.87, 0.89};
// Palette that colour-blind viewers can tell apart (Okabe & Ito 2008).
constexpr std::array<Colour, 4> kCurves{Colour{0.00, 0.45, 0.70}, Colour{0.34, 0.71, 0.91},
                                        Colour{0.84, 0.37, 0.00}, Colour{0.90, 0.62, 0.00}};

constexpr int kWidth = 900;
constexpr double kLeft = 80.0;
constexpr double kPlotWidth = kWidth - kLeft - 30.0;
constexpr double kLegendLine = 24.0;
constexpr double kPanelHeight = 230.0;
constexpr double kPanelPitch = 310.0;
constexpr double kTitleSize = 20.0;
constexpr double kTextSize = 16.0;
constexpr double kDot = 3.5;

struct CairoDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

double place(const Axis& axis, double value) {
    return (value - axis.low) / (axis.high - axis.low);
}

void setColour(cairo_t* context, const Colour& colour) {
    cairo_set_source_rgb(context, colour.red, colour.green, colour.blue);
}

// anchor: fraction of the text's width to the left of x (0: left-aligned, 1: right-aligned).
void text(cairo_t* context, const std::string& words, double x, double y, double anchor) {
    cairo_text_extents_t extents;
    cairo_text_extents(context, words.c_str(), &extents);
    setColour(context, kInk);
    cairo_move_to(context, x - anchor * extents.x_advance, y);
    cairo_show_text(context, words.c_str());
}

// Calls visit(value, label) for each tick.
template <typename Visit>
void eachTick(const Axis& axis, const Visit& visit) {
    const auto count = std::lround((axis.high - axis.low) / axis.step);
    for (long i = 0; i <= count; ++i) {
        const double value = axis.low + static_cast<double>(i) * axis.step;
        std::array<char, 32> label{};
        (void)std::snprintf(label.data(), label.size(), "%.*f", axis.decimals, value);
        visit(value, std::string(label.data()));
    }
}

void line(cairo_t* context, double x0, double y0, double x1, double y1) {
    cairo_move_to(context, x0, y0);
    cairo_line_to(context, x1, y1);
    cairo_stroke(context);
}

void drawPanel(cairo_t* context, const Figure& figure, const Panel& panel, double top) {
    const auto across = [&](double x) { return kLeft + kPlotWidth * place(figure.x, x); };
    const auto down = [&](double y) { return top + kPanelHeight * (1.0 - place(panel.y, y)); };
    cairo_set_line_width(context, 1.0);
    eachTick(figure.x, [&](double value, const std::string& label) {
        setColour(context, kGrid);
        line(context, across(value), top, across(value), top + kPanelHeight);
        text(context, label, across(value), top + kPanelHeight + 21.0, 0.5);
    });
    eachTick(panel.y, [&](double value, const std::string& label) {
        setColour(context, kGrid);
        line(context, kLeft, down(value), kLeft + kPlotWidth, down(value));
        text(context, label, kLeft - 9.0, down(value) + 6.0, 1.0);
    });
    text(context, panel.y.label, kLeft, top - 10.0, 0.0);
    text(context, figure.x.label, kLeft + kPlotWidth / 2.0, top + kPanelHeight + 43.0, 0.5);
    for (std::size_t curve = 0; curve < panel.curves.size(); ++curve) {
        setColour(context, kCurves.at(curve % kCurves.size()));
        cairo_set_line_width(context, 2.0);
        cairo_new_path(context);  // drops the current point that the text has left
        for (std::size_t i = 0; i < figure.x_values.size(); ++i) {
            cairo_line_to(context, across(figure.x_values[i]), down(panel.curves[curve][i]));
        }
        cairo_stroke(context);
        for (std::size_t i = 0; i < figure.x_values.size(); ++i) {
            cairo_arc(context, across(figure.x_values[i]), down(panel.curves[curve][i]), kDot, 0.0, 6.2832);
            cairo_fill(context);
        }
    }
}

double drawHeading(cairo_t* context, const Figure& figure) {
    cairo_set_font_size(context, kTitleSize);
    text(context, figure.title, kLeft, 36.0, 0.0);
    cairo_set_font_size(context, kTextSize);
    double y = 66.0;
    for (std::size_t curve = 0; curve < figure.names.size(); ++curve, y += kLegendLine) {
        setColour(context, kCurves.at(curve % kCurves.size()));
        cairo_set_line_width(context, 4.0);
        line(context, kLeft, y - 5.0, kLeft + 36.0, y - 5.0);
        text(context, figure.names[curve], kLeft + 48.0, y, 0.0);
    }
    return y;
}

}  // namespace

bool writePng(const Figure& figure, const std::string& path) {
    const double heading = 66.0 + kLegendLine * static_cast<double>(figure.names.size()) + 25.0;
    const double height = heading + kPanelPitch * static_cast<double>(figure.panels.size()) - 15.0;
    const std::unique_ptr<cairo_surface_t, CairoDeleter> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, static_cast<int>(height)));
    const std::unique_ptr<cairo_t, CairoDeleter> context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1.0, 1.0, 1.0);
    cairo_paint(context.get());
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    double top = drawHeading(context.get(), figure) + 25.0;
    for (const Panel& panel : figure.panels) {
        drawPanel(context.get(), figure, panel, top);
        top += kPanelPitch;
    }
    return cairo_surface_write_to_png(surface.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
}

}  // namespace study
