#pragma once

extern "C" {
#include <libavutil/mem.h>
}

#include <climits>
#include <cstddef>

namespace test {

/** Makes libavutil refuse allocations above a limit while it lives, in the whole program. */
class AllocationLimit {
  public:
    /** @param bytes Largest allocation that still succeeds. */
    explicit AllocationLimit(std::size_t bytes) { av_max_alloc(bytes); }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit() { av_max_alloc(INT_MAX); }
};

}  // namespace test
