#include "measured_head.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace response_quality {

const Ears& MeasuredHead::nearest(double azimuth_deg) const {
    const double azimuth_rad = azimuth_deg * std::numbers::pi / 180.0;
    const double x = std::cos(azimuth_rad);
    const double y = std::sin(azimuth_rad);
    const auto cosine = [x, y](const MeasuredDirection& direction) {
        return direction.unit[0] * x + direction.unit[1] * y;
    };
    return std::max_element(directions.begin(), directions.end(),
                            [&cosine](const MeasuredDirection& a, const MeasuredDirection& b) {
                                return cosine(a) < cosine(b);
                            })
        ->ears;
}

}  // namespace response_quality
