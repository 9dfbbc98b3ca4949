#pragma once

#include <cstddef>

namespace compare {

/** How long to measure. */
struct Effort {
    int turns;
    std::size_t material_steps;  // of kMaterialStep_frames
    int calls_timed;             // single calls for the percentiles
    int handles_timed;           // creations
};

}  // namespace compare
