#pragma once

#include <string>
#include <vector>

#include "bench_effects.h"
#include "bench_rounds.h"

namespace sonivex_tool {

/** The result of a benchmark run. */
struct BenchReport {
    struct Row {
        BenchCase shape;
        BenchTiming timing;
    };

    std::string processor;  // the system's name of it; empty if the system does not tell
    std::string vectors;    // the plug-in's name of the vector instructions; empty if it does not tell
    std::vector<Row> rows;
};

/** Formats the report for people: a table whose last line is terminated. */
std::string benchText(const BenchReport& report);

/** Formats the report for programs: one JSON object on one terminated line. */
std::string benchJson(const BenchReport& report);

}  // namespace sonivex_tool
