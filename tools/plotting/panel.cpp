#include "panel.h"

#include <utility>

namespace sonivex_plotting {
namespace {

// Distances in heights of the text.
constexpr double kTitleAbove = 0.65;
constexpr double kLegendAbove = 1.0;  // its middle, so that it stands on the title's base
constexpr double kTickLabelBelow = 1.35;
constexpr double kLabelBelow = 2.75;
constexpr double kTickLabelBefore = 0.55;
constexpr double kLabelBefore = 3.4;
constexpr double kSampleLength = 2.0;
constexpr double kAfterSample = 0.5;
constexpr double kBetweenEntries = 1.3;

constexpr Stroke kGridLine{.colour = kGrid, .width = 1.0};
constexpr Stroke kZeroLine{.colour = kFrame, .width = 1.0};

}  // namespace

Panel::Panel(Canvas& canvas, const Box& box, const std::string& title, Axis x, Axis y)
    : canvas_(canvas), box_(box), x_(std::move(x)), y_(std::move(y)) {
    drawGrid();
    const double size = canvas_.textSize();
    canvas_.text(title, {box_.left, box_.top - kTitleAbove * size}, Anchor::Start);
    canvas_.text(x_.label, {box_.left + box_.width / 2.0, box_.bottom() + kLabelBelow * size},
                 Anchor::Middle);
    canvas_.textUpwards(y_.label, {box_.left - kLabelBefore * size, box_.top + box_.height / 2.0});
}

Spot Panel::at(const Point& point) const {
    return {box_.left + box_.width * x_.place(point.x), box_.bottom() - box_.height * y_.place(point.y)};
}

void Panel::draw(const Curve& curve, const Stroke& stroke) {
    std::vector<Spot> spots;
    spots.reserve(curve.size());
    for (const Point& point : curve) spots.push_back(at(point));
    canvas_.polyline(spots, stroke, box_);
}

void Panel::mark(const Curve& curve, Marker shape, const Colour& colour) {
    for (const Point& point : curve) {
        if (point.y >= y_.low && point.y <= y_.high) canvas_.marker(shape, at(point), colour);
    }
}

void Panel::legend(const std::vector<LegendEntry>& entries) {
    const double size = canvas_.textSize();
    const double height = box_.top - kLegendAbove * size;
    double right = box_.right();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        canvas_.label(entry->name, {right, height}, Anchor::End);
        right -= canvas_.textWidth(entry->name) + kAfterSample * size;
        canvas_.line({right - kSampleLength * size, height}, {right, height}, entry->stroke);
        if (entry->marker) {
            canvas_.marker(*entry->marker, {right - kSampleLength * size / 2.0, height},
                           entry->stroke.colour);
        }
        right -= (kSampleLength + kBetweenEntries) * size;
    }
}

void Panel::drawGrid() {
    const double size = canvas_.textSize();
    const auto vertical = [&](double value) {
        const double x = at({value, y_.low}).x;
        canvas_.line({x, box_.top}, {x, box_.bottom()}, kGridLine);
        return x;
    };
    for (const double value : x_.minor_ticks) vertical(value);
    for (const Tick& tick : x_.ticks) {
        const double x = vertical(tick.value);
        canvas_.text(tick.label, {x, box_.bottom() + kTickLabelBelow * size}, Anchor::Middle);
    }
    for (const Tick& tick : y_.ticks) {
        const double y = at({x_.low, tick.value}).y;
        canvas_.line({box_.left, y}, {box_.right(), y}, tick.value == 0.0 ? kZeroLine : kGridLine);
        canvas_.label(tick.label, {box_.left - kTickLabelBefore * size, y}, Anchor::End);
    }
    canvas_.outline(box_, kZeroLine);
}

}  // namespace sonivex_plotting
