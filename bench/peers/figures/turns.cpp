#include "turns.h"

#include <algorithm>
#include <ctime>

namespace compare {
namespace {

double processCpu_s() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

std::vector<Timing> takeTurns(const std::vector<Contestant>& contestants, int turns) {
    std::vector<Timing> timings;
    timings.reserve(contestants.size());
    for (const Contestant& contestant : contestants) timings.push_back({contestant.name, {}});
    for (int turn = 0; turn <= turns; ++turn) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            const double start_s = processCpu_s();
            contestants[i].run();
            const double cpu_s = processCpu_s() - start_s;
            if (turn > 0) timings[i].cpu_ms_per_s.push_back(cpu_s * 1e3 / contestants[i].audio_s);
        }
    }
    return timings;
}

double quantile(std::vector<double> values, double fraction) {
    const auto place = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

double median(std::vector<double> values) {
    return quantile(std::move(values), 0.5);
}

double medianRatio(const Timing& numerator, const Timing& denominator) {
    std::vector<double> ratios;
    for (std::size_t turn = 0; turn < numerator.cpu_ms_per_s.size(); ++turn) {
        ratios.push_back(numerator.cpu_ms_per_s[turn] / denominator.cpu_ms_per_s[turn]);
    }
    return median(std::move(ratios));
}

double spread_percent(const Timing& timing) {
    const double range = quantile(timing.cpu_ms_per_s, 0.75) - quantile(timing.cpu_ms_per_s, 0.25);
    return 50 * range / median(timing.cpu_ms_per_s);
}

}  // namespace compare
