#pragma once

#include <optional>
#include <vector>

#include "axis.h"
#include "panel.h"

namespace sonivex_tool {

/** A value of a curve at a time; missing values interrupt the curve. */
struct TimedValue {
    double time_s = 0.0;
    std::optional<double> value;
};

/** Returns the pieces of a curve between missing values. Of a curve with more than two values for each of
 *  `columns` equal stretches of time, each stretch keeps its lowest and its highest value, in their order,
 *  so that no extreme is lost. */
std::vector<sonivex_plotting::Curve> piecesOf(const std::vector<TimedValue>& values, double length_s,
                                              int columns);

/** Returns an axis of time with labels in minutes and seconds, from 0 to `length_s`, or to a thousandth of
 *  a second if that is longer. */
sonivex_plotting::Axis clockAxis(double length_s);

}  // namespace sonivex_tool
