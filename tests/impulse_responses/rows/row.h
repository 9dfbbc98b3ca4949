// A row of the quality report: the figures of one measure, each with the limits that it must keep.
#pragma once

#include <string>
#include <vector>

namespace response_quality {

/** Limit of a figure that is bounded on one side only. */
inline constexpr double kNoLimit = 1e9;

/** One measured figure. */
struct Figure {
    std::string of;  // the set, pair, source or ear that was measured
    double value = 0.0;
    double lowest = 0.0;
    double highest = 0.0;

    /** True if the value is within its limits; false for NaN. */
    bool holds() const { return value >= lowest && value <= highest; }
};

/** All figures of one measure. */
struct Row {
    std::string measure;
    std::string unit;
    std::vector<Figure> figures;

    /** True if there are figures and all of them hold. */
    bool holds() const;
};

}  // namespace response_quality
