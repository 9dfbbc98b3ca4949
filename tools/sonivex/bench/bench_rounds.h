#pragma once

#include <functional>
#include <vector>

namespace sonivex_tool {

// Times several pieces of work in turn, and reports the median over the rounds.

/** A piece of work to time. */
struct BenchWork {
    std::function<void()> run;  // does one round
    double audio_s;             // length of the audio that one round processes
};

/** The clocks to measure with; tests replace them. */
struct BenchClocks {
    std::function<double()> cpu_s;   // processor time of this thread
    std::function<double()> wall_s;  // monotonic wall-clock time
};

/** Returns the clocks of this machine. */
BenchClocks systemClocks();

/** The cost of one piece of work. */
struct BenchTiming {
    int rounds = 0;
    double cpu_ms_per_s = 0.0;  // processor time per second of audio, the median over the rounds

    /** Returns the seconds of audio processed per second of processor time. */
    double timesRealTime() const { return 1e3 / cpu_ms_per_s; }
    /** Returns the share of one processor core that real-time playback takes, in percent. */
    double core_percent() const { return cpu_ms_per_s / 10.0; }
};

/** Smallest number of rounds that are counted. */
constexpr int kFewestRounds = 3;

/** Runs rounds, each of which runs every work once, so that other load on the machine affects all works
 *  alike. The first round warms up and is not counted. Stops after the round that reaches `limit_s` of
 *  wall-clock time, but not before kFewestRounds rounds are counted.
 *  @param between_rounds is called before each round, including the first; may throw
 *  @return the timings in the order of `works` */
std::vector<BenchTiming> takeRounds(const std::vector<BenchWork>& works, double limit_s,
                                    const BenchClocks& clocks, const std::function<void()>& between_rounds);

}  // namespace sonivex_tool
