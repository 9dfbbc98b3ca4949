// Replaces operator new, to count allocations and to let one fail.
#pragma once

#include <cstddef>

namespace test {

/** Watches the allocations of its lifetime. One at a time, on one thread. */
class AllocationWatch {
  public:
    /** @param failing_allocation the one that gets no memory, counted from 1; 0: none. */
    explicit AllocationWatch(int failing_allocation = 0);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    int requested() const;
    /** Of all requests together, freed or not. */
    std::size_t bytes() const;
    /** Allocated and not freed since the start. */
    int alive() const;
};

}  // namespace test
