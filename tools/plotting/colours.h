#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace sonivex_plotting {

/** A colour; every part is 0 to 1. */
struct Colour {
    double red, green, blue;

    bool operator==(const Colour&) const = default;
};

inline constexpr Colour kWhite{1.0, 1.0, 1.0};
inline constexpr Colour kInk{0.13, 0.13, 0.15};
inline constexpr Colour kGrid{0.87, 0.87, 0.89};
inline constexpr Colour kFrame{0.60, 0.60, 0.64};
inline constexpr Colour kGrey{0.70, 0.70, 0.72};

// Palette that colour-blind readers can tell apart (Okabe & Ito 2008).
inline constexpr Colour kBlue{0.00, 0.45, 0.70};
inline constexpr Colour kSkyBlue{0.34, 0.71, 0.91};
inline constexpr Colour kGreen{0.00, 0.62, 0.45};
inline constexpr Colour kOrange{0.90, 0.62, 0.00};
inline constexpr Colour kVermillion{0.84, 0.37, 0.00};
inline constexpr Colour kPurple{0.80, 0.47, 0.65};
inline constexpr Colour kYellow{0.94, 0.89, 0.26};

/** The colours of an image's values, from the lowest to the highest at equal steps. The lightness rises or
 *  falls all the way, so that an image keeps its order on a monochrome printer. */
using HeatMap = std::array<Colour, 5>;
inline constexpr HeatMap kHeatInLight{
    {{1.0, 1.0, 1.0}, {0.71, 0.84, 0.93}, {0.25, 0.55, 0.78}, {0.35, 0.20, 0.56}, {0.14, 0.03, 0.20}}};
inline constexpr HeatMap kHeatInDark{
    {{0.07, 0.08, 0.10}, {0.24, 0.15, 0.43}, {0.66, 0.22, 0.49}, {0.95, 0.52, 0.26}, {0.99, 0.97, 0.70}}};

/** Returns the colour of a value. @param value 0 to 1 */
constexpr Colour heatColour(const HeatMap& map, double value) {
    const double place = std::clamp(value, 0.0, 1.0) * static_cast<double>(map.size() - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(place), map.size() - 2);
    const double share = place - static_cast<double>(below);
    const auto mix = [share](double from, double to) { return from + share * (to - from); };
    const Colour& from = map[below];
    const Colour& to = map[below + 1];
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

}  // namespace sonivex_plotting
