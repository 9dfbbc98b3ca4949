#pragma once

#include <string>
#include <vector>

#include "source_report.h"

namespace sonivex_tool {

/** A file that a command has measured to its end. */
struct MeasuredInput {
    std::string path;
    DamageReport damage;
};

/** Returns true if a part of any file is lost. */
bool isAnyDamaged(const std::vector<MeasuredInput>& inputs);

/** Ends a command that has measured the rest of a damaged file. Call it after the results are printed.
 *  @throw Failure (InputDamaged) whose line tells the damage of each damaged file */
void failIfDamaged(const std::vector<MeasuredInput>& inputs);

}  // namespace sonivex_tool
