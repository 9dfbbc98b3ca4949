#pragma once

#include <functional>
#include <vector>

namespace sonivex_tool {

/** Work that is timed: what it does in one round, and how much audio that is. */
struct BenchWork {
    std::function<void()> run;
    double audio_s;
};

/** Where the time comes from. */
struct BenchClocks {
    std::function<double()> cpu_s;   // processor time of this thread
    std::function<double()> wall_s;  // the clock on the wall
};

/** Those of this machine. */
BenchClocks systemClocks();

struct BenchTiming {
    int rounds = 0;
    double cpu_ms_per_s = 0.0;  // processor time for a second of audio, the median over the rounds

    double timesRealTime() const { return 1e3 / cpu_ms_per_s; }
    double core_percent() const { return cpu_ms_per_s / 10.0; }
};

constexpr int kFewestRounds = 3;

/** Each work once, then all of them again, so that whatever else the machine does meets each alike. The first
 * round warms up and is not counted. Ends after the round that reaches `limit_s` by the clock on the wall,
 * but not before kFewestRounds were counted.
 *  @param between_rounds is called before each; may throw. */
std::vector<BenchTiming> takeRounds(const std::vector<BenchWork>& works, double limit_s,
                                    const BenchClocks& clocks, const std::function<void()>& between_rounds);

}  // namespace sonivex_tool
