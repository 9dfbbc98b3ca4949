#include "rate_choice.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace sonivex_tool {
namespace {

constexpr int kHighestTerm = 64;
constexpr int kAudibleRate_hz = 44100;  // keeps everything up to 20 kHz

// Returns the sum of the terms of the ratio of two rates; nothing if a term is above kHighestTerm.
std::optional<int> ratioTerms(int from_hz, int to_hz) {
    const int divisor = std::gcd(from_hz, to_hz);
    const int from = from_hz / divisor;
    const int to = to_hz / divisor;
    if (from > kHighestTerm || to > kHighestTerm) return std::nullopt;
    return from + to;
}

}  // namespace

int chooseRate_hz(int rate_hz, const std::vector<int>& supported) {
    std::vector<int> rates = supported;
    std::sort(rates.begin(), rates.end());
    if (std::binary_search(rates.begin(), rates.end(), rate_hz)) return rate_hz;
    int best_hz = 0;
    int fewest_terms = 0;
    for (const int candidate_hz : rates) {
        const auto terms = ratioTerms(rate_hz, candidate_hz);
        if (!terms || candidate_hz < std::min(rate_hz, kAudibleRate_hz)) continue;
        if (best_hz != 0 && *terms >= fewest_terms) continue;
        best_hz = candidate_hz;
        fewest_terms = *terms;
    }
    if (best_hz != 0) return best_hz;
    const auto higher = std::upper_bound(rates.begin(), rates.end(), rate_hz);
    return higher != rates.end() ? *higher : rates.back();
}

}  // namespace sonivex_tool
