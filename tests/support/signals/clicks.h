#pragma once

#include <cstddef>
#include <vector>

namespace test {

/** Returns the largest second difference |x[i+1] - 2 x[i] + x[i-1]| of the left channel of stereo samples,
 *  for i from `first` to before `last` (frames). A steady tone has a small one; a step adds its whole height.
 *  @throws std::out_of_range if the range leaves the samples */
double largestSecondDifference(const std::vector<float>& stereo, std::size_t first, std::size_t last);

}  // namespace test
