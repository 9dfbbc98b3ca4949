// Replaces mmap and munmap, to count mapped bytes and make mmap fail. The allocator is not affected: it does
// not reach the kernel through these functions.
#pragma once

#include <cstddef>

namespace test {

/** Counts the mappings during its lifetime. Only one object may exist at a time, on one thread. */
class MappingWatch {
  public:
    enum class Kernel { kGives, kRefuses };

    explicit MappingWatch(Kernel kernel = Kernel::kGives);
    ~MappingWatch();
    MappingWatch(const MappingWatch&) = delete;
    MappingWatch& operator=(const MappingWatch&) = delete;

    /** Calls of mmap and munmap since the start, including refused ones. */
    int calls() const;
    /** Bytes mapped since the start and not yet unmapped, in whole pages. */
    std::ptrdiff_t bytes() const;
};

}  // namespace test
