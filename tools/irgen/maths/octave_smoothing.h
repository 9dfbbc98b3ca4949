// Smoothing over a constant fraction of an octave, which resembles the resolution of hearing.
#pragma once

#include <vector>

namespace sonivex_irgen {

/** Replaces each bin with the mean of the bins from half_width_octaves below it to half_width_octaves above
 *  it; both limits are rounded to a bin.
 *  @param power values at the bins 0, 1, 2, ... of a transform */
std::vector<double> smoothOverOctaves(const std::vector<double>& power, double half_width_octaves);

}  // namespace sonivex_irgen
