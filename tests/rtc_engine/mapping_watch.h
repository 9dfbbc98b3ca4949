// Replaces mmap and munmap, to count what is mapped and to let mmap fail. The allocator reaches the kernel
// without these functions.
#pragma once

#include <cstddef>

namespace test {

/** Watches the mappings of its lifetime. One at a time, on one thread. */
class MappingWatch {
  public:
    enum class Kernel { kGives, kRefuses };

    explicit MappingWatch(Kernel kernel = Kernel::kGives);
    ~MappingWatch();
    MappingWatch(const MappingWatch&) = delete;
    MappingWatch& operator=(const MappingWatch&) = delete;

    /** Calls of mmap and munmap, refused ones too. */
    int calls() const;
    /** Mapped and not unmapped since the start, in whole pages. */
    std::ptrdiff_t bytes() const;
};

}  // namespace test
