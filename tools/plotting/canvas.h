#pragma once

#include <span>
#include <string>

#include "colours.h"

// The drawing library's context; only the sources of this room include its header.
using cairo_t = struct _cairo;  // NOLINT(bugprone-reserved-identifier): the library's own name

namespace sonivex_plotting {

/** A point of the picture, in pixels from its upper left corner. */
struct Spot {
    double x, y;
};

/** A rectangle of the picture, in pixels. */
struct Box {
    double left, top, width, height;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
};

/** The look of a line. */
struct Stroke {
    Colour colour = kInk;
    double width = 1.0;  // in pixels
    bool is_dashed = false;
};

/** The part of a text that lies at its spot. */
enum class Anchor { Start, Middle, End };

/** The shape of a data point. */
enum class Marker { Dot, Square, Triangle };

/** Draws lines, shapes and words in one typeface. */
class Canvas {
  public:
    /** @param context the drawing library's; it must outlive this object */
    explicit Canvas(cairo_t* context);

    /** Sets the height of the words that are drawn from now on. */
    void setTextSize(double size);
    double textSize() const { return text_size_; }
    double textWidth(const std::string& words) const;

    /** Writes words on a line whose base is at the spot's height. */
    void text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour = kInk);
    /** Writes words whose capitals have their middle at the spot's height. */
    void label(const std::string& words, const Spot& spot, Anchor anchor);
    /** Writes words from bottom to top, centred on the spot. */
    void textUpwards(const std::string& words, const Spot& spot);

    void line(const Spot& from, const Spot& to, const Stroke& stroke);
    /** Draws a line with an arrowhead at its end. */
    void arrow(const Spot& from, const Spot& to, const Stroke& stroke);
    /** Joins the spots, in their order; only the part inside of `clip` shows. */
    void polyline(std::span<const Spot> spots, const Stroke& stroke, const Box& clip);
    void outline(const Box& box, const Stroke& stroke);
    void fill(const Box& box, const Colour& colour);
    void marker(Marker shape, const Spot& spot, const Colour& colour);

  private:
    void setColour(const Colour& colour);
    void stroke(const Stroke& look);

    cairo_t* context_;
    double text_size_ = 0.0;
};

}  // namespace sonivex_plotting
