#pragma once

#include <string>
#include <vector>

#include "bench_effects.h"
#include "bench_rounds.h"

namespace sonivex_tool {

struct BenchReport {
    struct Row {
        BenchCase shape;
        BenchTiming timing;
    };

    std::string processor;  // as the system names it; empty: it does not
    std::string vectors;    // as the plug-in names them; empty: it does not
    std::vector<Row> rows;
};

/** For people: a table, with the last newline. */
std::string benchText(const BenchReport& report);

/** For programs: one JSON object on one line, with the newline. */
std::string benchJson(const BenchReport& report);

}  // namespace sonivex_tool
