#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sonivex_tool {

/** One table of an impulse response; the data is compiled in. */
struct ResponseTable {
    std::string name;
    std::span<const std::int16_t> samples;
};

/** What both ears hear of one loudspeaker. */
struct ResponseSource {
    ResponseTable left;
    ResponseTable right;
};

/** Is it one table for the two? */
inline bool isSharedByBothEars(const ResponseSource& source) {
    return source.left.samples.data() == source.right.samples.data();
}

/** The responses of one loudspeaker layout in one room. */
struct ResponseSet {
    std::string name;  // as on the command line
    std::string use;   // what the effect uses it for
    int rate_hz = 48000;
    double divisor = 1.0;     // one sample is gain * divisor
    double faded_part = 0.0;  // of a table's length, at its end
    std::vector<ResponseSource> sources;
};

/** All that are compiled in. The Audio stage's set has one source with the same table at both ears. */
const std::vector<ResponseSet>& allResponseSets();

/** The set of that name, or null. */
const ResponseSet* findResponseSet(const std::string& name);

/** A table's samples as gains. */
std::vector<double> gainsOf(const ResponseTable& table, const ResponseSet& set);

}  // namespace sonivex_tool
