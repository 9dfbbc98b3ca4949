#pragma once

#include <cstdint>

namespace test {

/** Memory that is allocated and not freed, of the whole process: live_memory.cpp replaces the C library's
 *  allocator, through which all libraries allocate. */
struct LiveMemory {
    std::int64_t blocks = 0;
    std::int64_t bytes = 0;  // as the allocator rounds them up
};

LiveMemory liveMemory();

}  // namespace test
