#pragma once

#include <string>
#include <vector>

#include "measured_sets.h"

namespace sonivex_tool {

/** Formats the figures for people: tables for each set, at most 110 columns wide. The last line is
 *  terminated. */
std::string responsesText(const std::vector<MeasuredSet>& sets);

/** Formats the figures for programs: one JSON object on one terminated line. Missing figures are null. */
std::string responsesJson(const std::vector<MeasuredSet>& sets);

/** Formats the figures for spreadsheets, as CSV (RFC 4180): a header line, and a line for each octave of each
 *  source, which repeats the figures of its source. Missing figures are empty. */
std::string responsesCsv(const std::vector<MeasuredSet>& sets);

}  // namespace sonivex_tool
