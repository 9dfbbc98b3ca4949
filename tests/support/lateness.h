#pragma once

#include <vector>

namespace test {

/** By how many frames `out` is late: where its correlation with `in` is greatest, within +-limit; the left
 * channels of interleaved stereo. Compiled with the libraries, since test programs are not optimised and this
 * takes its time. */
int lateness(const std::vector<float>& in, const std::vector<float>& out, int limit);

}  // namespace test
