#include "cairo_canvas.h"

#include <cairo.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace sonivex_plotting {
namespace {

constexpr double kMarkerRadius = 4.5;
constexpr double kDash = 5.0;
constexpr double kRightAngle = std::numbers::pi / 2.0;

// Returns the heat map's colour in light surroundings, as the drawing library stores it.
std::uint32_t heatPixel(std::uint8_t value) {
    const Colour colour = heatColour(kHeatInLight, value / 255.0);
    const auto byte = [](double part) { return static_cast<std::uint32_t>(std::lround(255.0 * part)); };
    return byte(colour.red) << 16U | byte(colour.green) << 8U | byte(colour.blue);
}

}  // namespace

CairoCanvas::CairoCanvas(cairo_t* context) : context_(context) {
    cairo_select_font_face(context_, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context_, text_size_);
}

void CairoCanvas::setTextSize(double size) {
    text_size_ = size;
    cairo_set_font_size(context_, size);
}

double CairoCanvas::textWidth(const std::string& words) const {
    cairo_text_extents_t extents;
    cairo_text_extents(context_, words.c_str(), &extents);
    return extents.x_advance;
}

void CairoCanvas::text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) {
    const double share_before = anchor == Anchor::Start ? 0.0 : anchor == Anchor::Middle ? 0.5 : 1.0;
    setColour(colour);
    cairo_move_to(context_, spot.x - share_before * textWidth(words), spot.y);
    cairo_show_text(context_, words.c_str());
    cairo_new_path(context_);  // drops the current point behind the words
}

void CairoCanvas::textUpwards(const std::string& words, const Spot& spot) {
    cairo_save(context_);
    cairo_translate(context_, spot.x, spot.y);
    cairo_rotate(context_, -kRightAngle);
    text(words, {0.0, 0.0}, Anchor::Middle);
    cairo_restore(context_);
}

void CairoCanvas::line(const Spot& from, const Spot& to, const Stroke& look) {
    cairo_move_to(context_, from.x, from.y);
    cairo_line_to(context_, to.x, to.y);
    stroke(look);
}

void CairoCanvas::polyline(std::span<const Spot> spots, const Stroke& look, const Box& clip) {
    cairo_save(context_);
    cairo_rectangle(context_, clip.left, clip.top, clip.width, clip.height);
    cairo_clip(context_);
    for (const Spot& spot : spots) cairo_line_to(context_, spot.x, spot.y);
    stroke(look);
    cairo_restore(context_);
}

void CairoCanvas::area(std::span<const Spot> spots, const Colour& colour, const Box& clip) {
    cairo_save(context_);
    cairo_rectangle(context_, clip.left, clip.top, clip.width, clip.height);
    cairo_clip(context_);
    for (const Spot& spot : spots) cairo_line_to(context_, spot.x, spot.y);
    setColour(colour);
    cairo_fill(context_);
    cairo_restore(context_);
}

void CairoCanvas::outline(const Box& box, const Stroke& look) {
    cairo_rectangle(context_, box.left, box.top, box.width, box.height);
    stroke(look);
}

void CairoCanvas::fill(const Box& box, const Colour& colour) {
    setColour(colour);
    cairo_rectangle(context_, box.left, box.top, box.width, box.height);
    cairo_fill(context_);
}

void CairoCanvas::marker(Marker shape, const Spot& spot, const Colour& colour) {
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

void CairoCanvas::image(const GreyImage& image, const Box& box) {
    if (image.width == 0 || image.height == 0) return;
    std::vector<std::uint32_t> pixels;
    pixels.reserve(image.values.size());
    for (const std::uint8_t value : image.values) pixels.push_back(heatPixel(value));
    constexpr int kPixel_bytes = 4;
    cairo_surface_t* surface = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_RGB24, image.width, image.height,
        image.width * kPixel_bytes);
    cairo_save(context_);
    cairo_translate(context_, box.left, box.top);
    cairo_scale(context_, box.width / image.width, box.height / image.height);
    cairo_set_source_surface(context_, surface, 0.0, 0.0);
    // Without padding, the edges would fade into the background.
    cairo_pattern_set_extend(cairo_get_source(context_), CAIRO_EXTEND_PAD);
    cairo_rectangle(context_, 0.0, 0.0, image.width, image.height);
    cairo_fill(context_);
    cairo_restore(context_);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
}

void CairoCanvas::setColour(const Colour& colour) {
    cairo_set_source_rgb(context_, colour.red, colour.green, colour.blue);
}

void CairoCanvas::stroke(const Stroke& look) {
    setColour(look.colour);
    cairo_set_line_width(context_, look.width);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(context_, &kDash, look.is_dashed ? 1 : 0, 0.0);
    cairo_stroke(context_);
}

}  // namespace sonivex_plotting
