#include "curve_points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace sonivex_tool {

using sonivex_plotting::Axis;
using sonivex_plotting::Curve;
using sonivex_plotting::Point;

namespace {

constexpr double kLeastLength_s = 0.001;
constexpr double kTicks = 10.0;
constexpr double kMinute_s = 60.0;
constexpr double kHour_s = 3600.0;

// The steps of a clock that are easy to read.
constexpr std::array<double, 14> kClockSteps_s{10.0,  15.0,   30.0,   60.0,   120.0,   300.0,   600.0,
                                               900.0, 1800.0, 3600.0, 7200.0, 14400.0, 28800.0, 86400.0};

/** The extremes of a stretch of a curve. */
struct Stretch {
    Point lowest;
    Point highest;

    explicit Stretch(const Point& point) : lowest(point), highest(point) {}

    void add(const Point& point) {
        if (point.y < lowest.y) lowest = point;
        if (point.y > highest.y) highest = point;
    }

    void appendTo(Curve& curve) const {
        const bool is_lowest_first = lowest.x <= highest.x;
        curve.push_back(is_lowest_first ? lowest : highest);
        if (lowest.x != highest.x) curve.push_back(is_lowest_first ? highest : lowest);
    }
};

Curve thinned(const Curve& curve, double stretch_s) {
    Curve thin;
    std::optional<Stretch> stretch;
    double number = -1.0;
    for (const Point& point : curve) {
        const double own = std::floor(point.x / stretch_s);
        if (stretch && own == number) {
            stretch->add(point);
            continue;
        }
        if (stretch) stretch->appendTo(thin);
        stretch.emplace(point);
        number = own;
    }
    if (stretch) stretch->appendTo(thin);
    return thin;
}

std::string clockLabel(double seconds, double step_s) {
    std::array<char, 32> text{};
    const auto whole = static_cast<long>(std::lround(seconds));
    if (step_s < 1.0 || seconds < kMinute_s) return sonivex_plotting::fixed(seconds, step_s < 1.0 ? 3 : 0);
    if (seconds >= kHour_s) {
        (void)std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                            whole % 60);
    } else {
        (void)std::snprintf(text.data(), text.size(), "%ld:%02ld", whole / 60, whole % 60);
    }
    return text.data();
}

}  // namespace

std::vector<Curve> piecesOf(const std::vector<TimedValue>& values, double length_s, int columns) {
    std::vector<Curve> pieces;
    bool is_in_piece = false;
    for (const TimedValue& value : values) {
        if (!value.value) {
            is_in_piece = false;
            continue;
        }
        if (!is_in_piece) pieces.emplace_back();
        is_in_piece = true;
        pieces.back().push_back({value.time_s, *value.value});
    }
    if (values.size() <= 2 * static_cast<std::size_t>(columns)) return pieces;
    for (Curve& piece : pieces) piece = thinned(piece, std::max(length_s, kLeastLength_s) / columns);
    return pieces;
}

Axis clockAxis(double length_s) {
    Axis axis;
    axis.high = std::max(length_s, kLeastLength_s);
    double step_s = sonivex_plotting::niceStep(axis.high, kTicks);
    if (axis.high >= kClockSteps_s.front() * kTicks) {
        const auto* step = std::find_if(kClockSteps_s.begin(), kClockSteps_s.end(),
                                        [&](double each) { return axis.high / each <= kTicks; });
        if (step != kClockSteps_s.end()) step_s = *step;
    }
    for (int tick = 0; tick * step_s <= axis.high * (1.0 + 1e-9); ++tick)
        axis.ticks.push_back({tick * step_s, clockLabel(tick * step_s, step_s)});
    axis.label = axis.high < kMinute_s ? "time (s)" : axis.high < kHour_s ? "time (min:s)" : "time (h:min:s)";
    return axis;
}

}  // namespace sonivex_tool
