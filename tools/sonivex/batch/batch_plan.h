#pragma once

#include <string>
#include <vector>

#include "batch_list.h"
#include "batch_settings.h"

namespace sonivex_tool {

/** One file to render. */
struct BatchItem {
    std::string input;   // as listed, and safe as an argument: it never begins with "-"
    std::string name;    // of the output, relative to the output folder
    std::string output;  // path of the output
};

/** Returns the output's name that follows from an input's: its stem with `extension`, or with its own
 *  extension if `extension` is empty. An extension that cannot be written becomes "wav". */
std::string outputName(const std::string& input, const std::string& extension);

/** Gives every entry its output, and returns those of the shard.
 *
 * The whole list is checked, so every shard finds the same faults.
 * @throw Failure (Usage) if two entries have the same output, or if an output is one of the inputs */
std::vector<BatchItem> planBatch(const std::vector<ListEntry>& entries, const BatchSettings& settings);

}  // namespace sonivex_tool
