#include "support/signals/lateness.h"

#include <algorithm>

namespace test {

int lateness(const std::vector<float>& in, const std::vector<float>& out, int limit) {
    int best = 0;
    double highest = 0.0;
    const auto frames = static_cast<int>(std::min(in.size(), out.size()) / 2);
    for (int lag = -limit; lag <= limit; ++lag) {
        double sum = 0.0;
        for (int n = limit; n < frames - limit; ++n)
            sum += static_cast<double>(in[2 * static_cast<std::size_t>(n)]) *
                   static_cast<double>(out[2 * static_cast<std::size_t>(n + lag)]);
        if (sum <= highest) continue;
        highest = sum;
        best = lag;
    }
    return best;
}

}  // namespace test
