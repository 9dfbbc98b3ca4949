// Timing in turns: every contestant runs once, then all of them again, so that disturbances by the rest of
// the machine hit all alike. The result is the median over the turns.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace compare {

struct Contestant {
    std::string name;
    std::function<void()> run;  // does the work of one turn
    double audio_s;             // duration of the audio in one turn
};

/** Processor time of the whole process in ms per second of audio, one number per turn. */
struct Timing {
    std::string name;
    std::vector<double> cpu_ms_per_s;
};

/** Times all contestants. A warm-up turn comes first and is not counted. The processor time of every thread
 *  counts, ours or a contestant's. */
std::vector<Timing> takeTurns(const std::vector<Contestant>& contestants, int turns);

/** The median; for an even count, the lower of the two middle values. */
double median(std::vector<double> values);
/** The value at index fraction * (n - 1), rounded down, of the sorted values. @param fraction 0..1 */
double quantile(std::vector<double> values, double fraction);

/** Median over the turns of numerator / denominator. */
double medianRatio(const Timing& numerator, const Timing& denominator);

/** Half the interquartile range, in percent of the median. */
double spread_percent(const Timing& timing);

}  // namespace compare
