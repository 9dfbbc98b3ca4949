// Ways to cut a stream into calls of an effect.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/signals/signals.h"

namespace test {

/** Returns as many calls of `size` frames as fit into `frames`. */
inline std::vector<int> callsOf(int size, std::size_t frames) {
    return std::vector<int>(frames / static_cast<std::size_t>(size), size);
}

/** Returns calls of 1 to `longest` frames whose sum is `frames`. */
inline std::vector<int> randomCalls(std::uint64_t seed, std::size_t frames, int longest) {
    Random random(seed);
    std::vector<int> sizes;
    for (auto left = static_cast<int>(frames); left > 0; left -= sizes.back()) {
        sizes.push_back(std::min(random.between(1, longest), left));
    }
    return sizes;
}

}  // namespace test
