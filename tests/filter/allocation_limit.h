#pragma once

extern "C" {
#include <libavutil/mem.h>
}

#include <climits>
#include <cstddef>

namespace test {

/** libavutil refuses allocations beyond a limit, for all of the program, as long as it lives. */
class AllocationLimit {
  public:
    explicit AllocationLimit(std::size_t bytes) { av_max_alloc(bytes); }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit() { av_max_alloc(INT_MAX); }
};

}  // namespace test
