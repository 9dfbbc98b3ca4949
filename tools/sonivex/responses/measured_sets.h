#pragma once

#include <optional>
#include <string>
#include <vector>

#include "responses_measures.h"
#include "responses_tables.h"
#include "source_measures.h"

namespace sonivex_tool {

/** The responses to measure. */
struct ResponseChoice {
    std::vector<const ResponseSet*> sets;
    std::optional<int> source;  // number of the source in each set, from 1; missing: all sources
};

/** The figures of one table. */
struct MeasuredTable {
    std::string ear;  // "left", "right" or "both"
    std::string name;
    std::size_t samples = 0;
    ResponseMeasures figures;
};

/** The figures of one loudspeaker. */
struct MeasuredSource {
    int number = 0;  // from 1
    std::string loudspeaker;
    std::vector<MeasuredTable> tables;  // of the left and of the right ear, or one for both
    SourceMeasures figures;
};

/** The figures of a set, or of one source in it. */
struct MeasuredSet {
    const ResponseSet* set = nullptr;
    std::vector<MeasuredSource> sources;
    /** Holds the ratios of the sum that each ear hears of its channel. It is empty if the set has crosstalk
     *  or if not all sources are chosen. */
    std::optional<SourceMeasures> as_heard;
};

/** Measures one source of a set. @param number of the source, from 1 */
MeasuredSource measureSourceOf(const ResponseSet& set, int number);

/** Measures the chosen responses. @throw Failure when a signal interrupts it */
std::vector<MeasuredSet> measureSets(const ResponseChoice& choice);

}  // namespace sonivex_tool
