#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interaural.h"

namespace sonivex_tool {

/** A part of a file that holds one sound. */
struct Segment {
    std::string name;
    double from_s = 0.0;
    double to_s = 0.0;
};

/** Read "NAME=FROM-TO", times in seconds: "side left=10-12".
 *  @return whether it is one, with 0 <= FROM < TO */
bool parseSegment(const std::string& text, Segment& segment);

/** A segment and what the ears have of it. */
struct SegmentEars {
    Segment segment;
    InterauralDifference ears;
};

/** Compare the ears of each segment of a stereo file; without segments, of all of it.
 *  @throw Failure when the file cannot be read, has no two channels, or ends before a segment does */
std::vector<SegmentEars> measureEars(const std::string& path, const std::vector<Segment>& segments);

/** For people: a table, with the last newline. */
std::string asText(const std::vector<SegmentEars>& rows);

/** For programs: one JSON array on one line, with the newline. */
std::string asJson(const std::vector<SegmentEars>& rows);

}  // namespace sonivex_tool
