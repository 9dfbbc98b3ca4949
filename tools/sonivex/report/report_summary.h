#pragma once

#include <string>

#include "measured_report.h"

namespace sonivex_tool {

/** The number of the schema of `summaryJson`, which grows when a program that reads it would have to
 *  change. */
inline constexpr int kSummaryVersion = 1;

/** Returns the figures of a report for programs: one JSON object, which docs/report.schema.json describes.
 *  Missing figures are null. */
std::string summaryJson(const MeasuredReport& report);

/** Returns the figures of a report for people, as a few lines. */
std::string summaryText(const MeasuredReport& report, std::size_t page_bytes);

}  // namespace sonivex_tool
