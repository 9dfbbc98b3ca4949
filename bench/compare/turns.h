// Timing in turns: every contestant runs once, then all of them again, so that whatever else the machine does
// meets each alike; what counts is the median over the turns.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace compare {

struct Contestant {
    std::string name;
    std::function<void()> run;  // the work of one turn
    double audio_s;             // how much audio that is
};

/** Processor time of the whole process in ms for a second of audio, one number a turn. */
struct Timing {
    std::string name;
    std::vector<double> cpu_ms_per_s;
};

/** The first turn warms up and is not counted. Processor time of any thread counts, ours or a contestant's.
 */
std::vector<Timing> takeTurns(const std::vector<Contestant>& contestants, int turns);

/** The median; the lower of the two in the middle. */
double median(std::vector<double> values);
double quantile(std::vector<double> values, double fraction);

/** Median over the turns of one timing against another. */
double medianRatio(const Timing& numerator, const Timing& denominator);

/** Half of what lies between the quartiles, in percent of the median. */
double spread_percent(const Timing& timing);

}  // namespace compare
