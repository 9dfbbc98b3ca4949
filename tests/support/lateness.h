#pragma once

#include <vector>

namespace test {

/** Returns the delay of `out` against `in` in frames: the lag within +-limit with the greatest
 *  cross-correlation of the left channels. Both signals are interleaved stereo. An optimised library compiles
 *  this search, which would be too slow in test programs: those are built without optimisation. */
int lateness(const std::vector<float>& in, const std::vector<float>& out, int limit);

}  // namespace test
