#pragma once

#include "canvas.h"

// The drawing library's context; only the sources of this room include its header.
using cairo_t = struct _cairo;  // NOLINT(bugprone-reserved-identifier): the library's own name

namespace sonivex_plotting {

/** Height of the words of a new canvas. */
inline constexpr double kFirstTextSize = 16.0;

/** Draws with the drawing library, on a file's surface. */
class CairoCanvas : public Canvas {
  public:
    /** @param context the drawing library's; it must outlive this object */
    explicit CairoCanvas(cairo_t* context);

    using Canvas::text;
    void setTextSize(double size) override;
    double textSize() const override { return text_size_; }
    double textWidth(const std::string& words) const override;
    void text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) override;
    void textUpwards(const std::string& words, const Spot& spot) override;
    void line(const Spot& from, const Spot& to, const Stroke& stroke) override;
    void polyline(std::span<const Spot> spots, const Stroke& stroke, const Box& clip) override;
    void area(std::span<const Spot> spots, const Colour& colour, const Box& clip) override;
    void outline(const Box& box, const Stroke& stroke) override;
    void fill(const Box& box, const Colour& colour) override;
    void marker(Marker shape, const Spot& spot, const Colour& colour) override;
    void image(const GreyImage& image, const Box& box) override;

  private:
    void setColour(const Colour& colour);
    void stroke(const Stroke& look);

    cairo_t* context_;
    double text_size_ = kFirstTextSize;
};

}  // namespace sonivex_plotting
