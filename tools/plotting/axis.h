#pragma once

#include <string>
#include <vector>

namespace sonivex_plotting {

/** A labelled place on an axis. */
struct Tick {
    double value;
    std::string label;
};

/** An axis from `low` to `high`, linear or logarithmic. */
struct Axis {
    double low = 0.0;
    double high = 1.0;
    bool is_logarithmic = false;
    std::string label;  // what the axis shows, with its unit
    std::vector<Tick> ticks = {};
    std::vector<double> minor_ticks = {};  // lines of the grid without a label

    /** Returns 0 at the low end of the axis, 1 at the high end, and values beyond for values beyond. */
    double place(double value) const;
};

/** Returns 1, 2 or 5 times a power of ten, the smallest of which at most `count` steps fit into the range. */
double niceStep(double range, double count);

/** Makes a linear axis with a tick at each multiple of `step`. The labels have the decimals of the step.
 *  @param step a decimal fraction above 0 */
Axis linearAxis(double low, double high, double step, const std::string& label);

/** Makes a logarithmic axis with these ticks. */
Axis logarithmicAxis(double low, double high, const std::vector<Tick>& ticks, const std::string& label);

/** Makes a logarithmic axis of frequencies with the ticks 20, 50, 100, .. 20k, as far as they lie on it.
 *  @param low_hz, high_hz its ends */
Axis frequencyAxis(double low_hz, double high_hz);

/** Formats a number with a fixed number of decimals; zero has no sign. */
std::string fixed(double value, int decimals);

}  // namespace sonivex_plotting
