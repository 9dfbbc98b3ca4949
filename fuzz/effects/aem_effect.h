#pragma once

#include <cstdint>
#include <functional>

namespace fuzz {

/** One handle of an effect and what its header promises. */
struct AemEffect {
    void* handle = nullptr;
    int width_in = 2;      // samples per frame of the input
    int width_out = 2;     // and of the output
    int block_frames = 0;  // the effect works on blocks of this length
    int refusal = -1;      // the result for a null pointer or a count that does not fit an int
    bool is_limited = true;
    /** Calls the effect's process function with this handle or with null. */
    std::function<int(void* handle, const std::int16_t* in, std::int16_t* out, int frames)> process;
};

}  // namespace fuzz
