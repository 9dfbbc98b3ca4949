#pragma once

#include <memory>

#include "cairo_canvas.h"

namespace sonivex_plotting {

/** Draws as elements of SVG that a page contains. Their colours are CSS variables of the page, so that a
 *  picture follows the page's scheme:
 *
 *    --plot-ink, --plot-grid, --plot-frame, --plot-grey, --plot-blue, …   colours.h has their defaults
 *    --plot-heat   the filter that colours images, such as url(#heat) of heatFilter()
 *
 *  Words are text, so that they can be selected, found and read aloud. */
class ElementCanvas : public Canvas {
  public:
    /** @throw std::bad_alloc; std::runtime_error if the drawing library fails */
    ElementCanvas();
    ~ElementCanvas() override;

    /** Returns the elements so far. */
    const std::string& elements() const { return elements_; }

    using Canvas::text;
    void setTextSize(double size) override;
    double textSize() const override { return text_size_; }
    /** Returns the width in the drawing library's typeface, which the page's need not be.
     *  @throw std::bad_alloc; std::runtime_error if the drawing library fails. A later call fails as well */
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
    class Ruler;

    std::string elements_;
    double text_size_ = kFirstTextSize;
    std::unique_ptr<Ruler> ruler_;
};

/** Returns an SVG filter that gives an image the colours of a heat map.
 *  @param id of the filter in the page */
std::string heatFilter(const std::string& id, const HeatMap& map);

/** Returns text with the characters replaced that have a meaning in HTML and XML, also within an attribute.
 *  Control characters other than tab and line break, which XML does not allow, become U+FFFD. */
std::string escapedText(const std::string& words);

}  // namespace sonivex_plotting
