#include "bench_rounds.h"

#include <algorithm>
#include <cstddef>
#include <ctime>

namespace sonivex_tool {
namespace {

double now_s(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Returns the median; of two middle values the lower one.
double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>((values.size() - 1) / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

BenchClocks systemClocks() {
    return {.cpu_s = [] { return now_s(CLOCK_THREAD_CPUTIME_ID); },
            .wall_s = [] { return now_s(CLOCK_MONOTONIC); }};
}

std::vector<BenchTiming> takeRounds(const std::vector<BenchWork>& works, double limit_s,
                                    const BenchClocks& clocks, const std::function<void()>& between_rounds) {
    std::vector<std::vector<double>> cpu_ms_per_s(works.size());
    const double end_s = clocks.wall_s() + limit_s;
    for (int counted = -1; counted < kFewestRounds || clocks.wall_s() < end_s; ++counted) {
        between_rounds();
        for (size_t i = 0; i < works.size(); ++i) {
            const double start_s = clocks.cpu_s();
            works[i].run();
            const double cpu_s = clocks.cpu_s() - start_s;
            if (counted >= 0) cpu_ms_per_s[i].push_back(cpu_s * 1e3 / works[i].audio_s);
        }
    }
    std::vector<BenchTiming> timings;
    timings.reserve(works.size());
    for (const std::vector<double>& rounds : cpu_ms_per_s) {
        timings.push_back({.rounds = static_cast<int>(rounds.size()), .cpu_ms_per_s = median(rounds)});
    }
    return timings;
}

}  // namespace sonivex_tool
