#pragma once

#include <span>
#include <string>

#include "colours.h"
#include "grey_image.h"

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

/** Draws lines, shapes and words in one typeface. CairoCanvas draws files, ElementCanvas elements of a page.
 */
class Canvas {
  public:
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    virtual ~Canvas();

    /** Sets the height of the words that are drawn from now on. */
    virtual void setTextSize(double size) = 0;
    virtual double textSize() const = 0;
    virtual double textWidth(const std::string& words) const = 0;

    /** Writes words on a line whose base is at the spot's height. */
    virtual void text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) = 0;
    void text(const std::string& words, const Spot& spot, Anchor anchor) { text(words, spot, anchor, kInk); }
    /** Writes words whose capitals have their middle at the spot's height. */
    void label(const std::string& words, const Spot& spot, Anchor anchor);
    /** Writes words from bottom to top, centred on the spot. */
    virtual void textUpwards(const std::string& words, const Spot& spot) = 0;

    virtual void line(const Spot& from, const Spot& to, const Stroke& stroke) = 0;
    /** Draws a line with an arrowhead at its end. */
    void arrow(const Spot& from, const Spot& to, const Stroke& stroke);
    /** Joins the spots, in their order; only the part inside of `clip` shows. */
    virtual void polyline(std::span<const Spot> spots, const Stroke& stroke, const Box& clip) = 0;
    /** Fills the shape that the spots surround; only the part inside of `clip` shows. */
    virtual void area(std::span<const Spot> spots, const Colour& colour, const Box& clip) = 0;
    virtual void outline(const Box& box, const Stroke& stroke) = 0;
    virtual void fill(const Box& box, const Colour& colour) = 0;
    virtual void marker(Marker shape, const Spot& spot, const Colour& colour) = 0;
    /** Fills a box with an image in the colours of the heat map (colours.h). */
    virtual void image(const GreyImage& image, const Box& box) = 0;
};

}  // namespace sonivex_plotting
