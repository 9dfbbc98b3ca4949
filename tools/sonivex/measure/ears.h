#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "interaural.h"
#include "lateral_angle.h"
#include "source_report.h"

namespace sonivex_tool {

/** A part of a file that holds one sound. */
struct Segment {
    std::string name;
    double from_s = 0.0;
    double to_s = 0.0;
};

/** Parses "NAME=FROM-TO" with times in seconds: "side left=10-12".
 *  @return false if `text` has another form or violates 0 <= FROM < TO; `segment` is unspecified then */
bool parseSegment(const std::string& text, Segment& segment);

/** A segment and the differences between the ears in it. */
struct SegmentEars {
    Segment segment;
    InterauralDifference ears;
    std::optional<LateralAngle> lateral;  // missing for silence and for sounds outside the bands of speech
};

/** Tells how both ears hear a file. */
struct EarsReport {
    std::vector<SegmentEars> rows;
    DamageReport damage;  // of the whole file
};

/** Compares the ears in each segment of a stereo file; without segments, in the whole file.
 *  @throw Failure if the file cannot be read, is not stereo, or ends before a segment does */
EarsReport measureEars(const std::string& path, const std::vector<Segment>& segments);

/** Formats a report for people: a table whose last line is terminated. */
std::string asText(const EarsReport& report);

/** Formats a report for programs: one JSON array on one terminated line. */
std::string asJson(const EarsReport& report);

}  // namespace sonivex_tool
