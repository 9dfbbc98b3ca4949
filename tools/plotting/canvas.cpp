#include "canvas.h"

#include <cairo.h>

#include <cmath>
#include <numbers>

namespace sonivex_plotting {
namespace {

constexpr double kFirstTextSize = 16.0;
constexpr double kHalfCapital = 0.36;  // in heights of the text
constexpr double kMarkerRadius = 4.5;
constexpr double kArrowLength = 7.0;
constexpr double kArrowAngle = 0.45;  // between the shaft and each side of the head, in radians
constexpr double kDash = 5.0;
constexpr double kRightAngle = std::numbers::pi / 2.0;

}  // namespace

Canvas::Canvas(cairo_t* context) : context_(context) {
    cairo_select_font_face(context_, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    setTextSize(kFirstTextSize);
}

void Canvas::setTextSize(double size) {
    text_size_ = size;
    cairo_set_font_size(context_, size);
}

double Canvas::textWidth(const std::string& words) const {
    cairo_text_extents_t extents;
    cairo_text_extents(context_, words.c_str(), &extents);
    return extents.x_advance;
}

void Canvas::text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) {
    const double share_before = anchor == Anchor::Start ? 0.0 : anchor == Anchor::Middle ? 0.5 : 1.0;
    setColour(colour);
    cairo_move_to(context_, spot.x - share_before * textWidth(words), spot.y);
    cairo_show_text(context_, words.c_str());
    cairo_new_path(context_);  // drops the current point behind the words
}

void Canvas::label(const std::string& words, const Spot& spot, Anchor anchor) {
    text(words, {spot.x, spot.y + kHalfCapital * text_size_}, anchor);
}

void Canvas::textUpwards(const std::string& words, const Spot& spot) {
    cairo_save(context_);
    cairo_translate(context_, spot.x, spot.y);
    cairo_rotate(context_, -kRightAngle);
    text(words, {0.0, 0.0}, Anchor::Middle);
    cairo_restore(context_);
}

void Canvas::line(const Spot& from, const Spot& to, const Stroke& look) {
    cairo_move_to(context_, from.x, from.y);
    cairo_line_to(context_, to.x, to.y);
    stroke(look);
}

void Canvas::arrow(const Spot& from, const Spot& to, const Stroke& look) {
    line(from, to, look);
    const double back = std::atan2(from.y - to.y, from.x - to.x);
    for (const double side : {-kArrowAngle, kArrowAngle}) {
        const Spot end{to.x + kArrowLength * std::cos(back + side),
                       to.y + kArrowLength * std::sin(back + side)};
        line(to, end, {look.colour, look.width, false});
    }
}

void Canvas::polyline(std::span<const Spot> spots, const Stroke& look, const Box& clip) {
    cairo_save(context_);
    cairo_rectangle(context_, clip.left, clip.top, clip.width, clip.height);
    cairo_clip(context_);
    for (const Spot& spot : spots) cairo_line_to(context_, spot.x, spot.y);
    stroke(look);
    cairo_restore(context_);
}

void Canvas::outline(const Box& box, const Stroke& look) {
    cairo_rectangle(context_, box.left, box.top, box.width, box.height);
    stroke(look);
}

void Canvas::fill(const Box& box, const Colour& colour) {
    setColour(colour);
    cairo_rectangle(context_, box.left, box.top, box.width, box.height);
    cairo_fill(context_);
}

void Canvas::marker(Marker shape, const Spot& spot, const Colour& colour) {
    constexpr double kHalf = kMarkerRadius;
    switch (shape) {
        case Marker::Dot:
            cairo_arc(context_, spot.x, spot.y, kHalf, 0.0, 4.0 * kRightAngle);
            break;
        case Marker::Square:
            cairo_rectangle(context_, spot.x - kHalf, spot.y - kHalf, 2.0 * kHalf, 2.0 * kHalf);
            break;
        case Marker::Triangle:
            cairo_move_to(context_, spot.x, spot.y - 1.2 * kHalf);
            cairo_line_to(context_, spot.x + 1.2 * kHalf, spot.y + kHalf);
            cairo_line_to(context_, spot.x - 1.2 * kHalf, spot.y + kHalf);
            cairo_close_path(context_);
            break;
    }
    setColour(colour);
    cairo_fill(context_);
}

void Canvas::setColour(const Colour& colour) {
    cairo_set_source_rgb(context_, colour.red, colour.green, colour.blue);
}

void Canvas::stroke(const Stroke& look) {
    setColour(look.colour);
    cairo_set_line_width(context_, look.width);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(context_, &kDash, look.is_dashed ? 1 : 0, 0.0);
    cairo_stroke(context_);
}

}  // namespace sonivex_plotting
