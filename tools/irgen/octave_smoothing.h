// Averages over a constant part of an octave, as hearing does.
#pragma once

#include <vector>

namespace sonivex_irgen {

/** Each bin becomes the mean of the bins from half_width_octaves below to half_width_octaves above it,
 *  both rounded to a bin.
 *  @param power values at the bins 0, 1, 2, ... of a transform */
std::vector<double> smoothOverOctaves(const std::vector<double>& power, double half_width_octaves);

}  // namespace sonivex_irgen
