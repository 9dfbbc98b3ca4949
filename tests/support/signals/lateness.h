#pragma once

#include <vector>

namespace test {

/** Returns the delay of `out` against `in` in frames: the lag within +-limit with the greatest
 *  cross-correlation of the left channels. Both signals are interleaved stereo. */
int lateness(const std::vector<float>& in, const std::vector<float>& out, int limit);

}  // namespace test
