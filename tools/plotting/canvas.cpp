#include "canvas.h"

#include <cmath>

namespace sonivex_plotting {
namespace {

constexpr double kHalfCapital = 0.36;  // in heights of the text
constexpr double kArrowLength = 7.0;
constexpr double kArrowAngle = 0.45;  // between the shaft and each side of the head, in radians

}  // namespace

Canvas::~Canvas() = default;

void Canvas::label(const std::string& words, const Spot& spot, Anchor anchor) {
    text(words, {spot.x, spot.y + kHalfCapital * textSize()}, anchor);
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

}  // namespace sonivex_plotting
