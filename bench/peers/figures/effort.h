#pragma once

#include <cstddef>

namespace compare {

/** Length of the measurements. */
struct Effort {
    int turns;
    std::size_t material_steps;  // length of the material, in units of kMaterialStep_frames
    int calls_timed;             // single calls timed for the percentiles
    int handles_timed;           // handle creations timed
};

}  // namespace compare
