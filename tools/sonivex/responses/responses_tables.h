#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "response_formats.h"

namespace sonivex_tool {

// The impulse response tables of the surround effect, compiled into the program.

/** The table of one impulse response. */
struct ResponseTable {
    std::string name;
    std::span<const std::int16_t> samples;  // static data
};

/** The responses of one loudspeaker at both ears. */
struct ResponseSource {
    std::string loudspeaker;  // "front left", "centre", …; empty for the Audio stage, which has none
    ResponseTable left;
    ResponseTable right;
};

/** Returns true if both ears use the same table. */
inline bool isSharedByBothEars(const ResponseSource& source) {
    return source.left.samples.data() == source.right.samples.data();
}

/** The responses of one loudspeaker layout in one room. */
struct ResponseSet {
    std::string name;  // as on the command line
    std::string use;   // effect type and layout that use the set, for messages
    sonivex::ResponseFormat format;
    std::vector<ResponseSource> sources;
    /** True if the ears hear the same channel through a source's two tables. False: each ear hears only its
     *  own channel, through its tables of all sources. */
    bool has_crosstalk = true;
};

/** Returns all sets. The set of the Audio stage has one source, with the same table at both ears. */
const std::vector<ResponseSet>& allResponseSets();

/** Returns the set of that name, or null. */
const ResponseSet* findResponseSet(const std::string& name);

/** Returns a table's samples as gains. */
std::vector<double> gainsOf(const ResponseTable& table, const ResponseSet& set);

}  // namespace sonivex_tool
