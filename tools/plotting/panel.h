#pragma once

#include <optional>
#include <string>
#include <vector>

#include "axis.h"
#include "canvas.h"

namespace sonivex_plotting {

/** A point of a curve, in the units of the axes. */
struct Point {
    double x, y;
};
using Curve = std::vector<Point>;

/** An entry of a legend. */
struct LegendEntry {
    std::string name;
    Stroke stroke;
    std::optional<Marker> marker = {};
};

/** One diagram of a picture: a titled grid with two axes, into which curves are drawn.
 *
 *  The constructor draws the grid. Ticks, labels and the title lie outside of the box: up to 2 heights of the
 *  text above it, 3 below it and 4 left of it. An empty title or label takes no place. */
class Panel {
  public:
    /** @param canvas must outlive this object
     *  @param box the inside of the diagram */
    Panel(Canvas& canvas, const Box& box, const std::string& title, Axis x, Axis y);

    /** Draws a curve as a line, clipped to the box. */
    void draw(const Curve& curve, const Stroke& stroke);
    /** Draws a marker at each point of a curve that lies in the box. */
    void mark(const Curve& curve, Marker shape, const Colour& colour);
    /** Writes names with samples of their lines above the box, the last one at its right end. */
    void legend(const std::vector<LegendEntry>& entries);

    /** Returns the place of a point in the picture. */
    Spot at(const Point& point) const;

  private:
    void drawGrid();

    Canvas& canvas_;
    Box box_;
    Axis x_;
    Axis y_;
};

}  // namespace sonivex_plotting
