#include "support/signals/clicks.h"

#include <algorithm>
#include <cmath>

namespace test {

double largestSecondDifference(const std::vector<float>& stereo, std::size_t first, std::size_t last) {
    double largest = 0.0;
    const auto left = [&stereo](std::size_t frame) { return static_cast<double>(stereo.at(2 * frame)); };
    for (std::size_t i = std::max<std::size_t>(first, 1); i < last; ++i)
        largest = std::max(largest, std::abs(left(i + 1) - 2.0 * left(i) + left(i - 1)));
    return largest;
}

}  // namespace test
