#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** How reading a file has changed its audio so as to follow the timestamps. */
struct TimelineReport {
    double lead_in_s = 0.0;  // silence before a stream that begins later than its file
    uint64_t gaps = 0;       // without a sign of damage
    double filled_s = 0.0;   // silence in them
    uint64_t overlaps = 0;
    double cut_s = 0.0;  // audio removed from them
    uint64_t jumps = 0;  // timestamps that are too far off to be followed
};

/** Signs that a part of a file is lost. */
struct DamageReport {
    uint64_t read_errors = 0;       // places where the file could not be read
    uint64_t corrupt_packets = 0;   // marked as damaged by the container; what they hold is decoded
    uint64_t decode_errors = 0;     // packets and frames that failed to decode
    double filled_s = 0.0;          // silence in place of what is lost
    double missing_end_s = 0.0;     // by which the audio ends before its stated length
    bool ends_prematurely = false;  // reading ended within an element of the file

    /** Returns true if a part of the audio is lost. */
    bool isDamaged() const;
    /** Returns the length of the audio that is known to be lost. */
    double lost_s() const { return filled_s + missing_end_s; }
    /** Returns true if `lost_s` tells how much is lost: not if the file is cut off and states no length. */
    bool isLossKnown() const;
    /** Formats the length of what is lost: "3.200 s", or "an unknown part". */
    std::string lossText() const;
};

/** Formats the signs of damage as a sentence: `"a.flac" is damaged: it is cut off`. */
std::string damageSentence(const std::string& path, const DamageReport& damage);

/** Formats both reports for the user, as sentences that begin with the file.
 * @return no line for a clean file */
std::vector<std::string> sentencesOn(const std::string& path, const TimelineReport& timeline,
                                     const DamageReport& damage);

}  // namespace sonivex_tool
