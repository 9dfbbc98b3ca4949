// Replaces operator new, to count allocations and make one fail.
#pragma once

#include <cstddef>

namespace test {

/** Counts the allocations during its lifetime. Only one object may exist at a time, on one thread. */
class AllocationWatch {
  public:
    /** @param failing_allocation number of the allocation that fails, counted from 1; 0: none */
    explicit AllocationWatch(int failing_allocation = 0);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    /** Allocations requested since the start, including a failed one. */
    int requested() const;
    /** Sum of all requests since the start, whether freed or not. */
    std::size_t bytes() const;
    /** Blocks allocated since the start and not yet freed. */
    int alive() const;
};

}  // namespace test
