#pragma once

#include <cstdint>

#include "soak/live_memory.h"

namespace test {

/** Counts what a process holds. */
struct ProcessState {
    LiveMemory memory;
    std::int64_t resident_bytes = 0;
    int threads = 0;
    int descriptors = 0;  // open files
};

/** Returns what this process holds now. Memory that the allocator keeps for later is given back first.
 *  @param threads how many threads there should be. The system lists one that has ended for a moment longer,
 *  so the function waits a second for others to go. */
ProcessState processState(int threads);

}  // namespace test
