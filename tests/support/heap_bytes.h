#pragma once

#include <cstddef>

namespace test {

/** Bytes that this process holds: of the allocator, its overhead included, and in anonymous mappings.
 *
 *  The allocator does not see what a program maps by itself. heap_bytes.cpp therefore takes the place of mmap
 *  and munmap for all code of the program but its shared libraries, and counts. The allocator reaches the
 *  kernel without these functions, so nothing counts twice.
 *
 *  A sanitizer replaces the allocator and both functions for its own needs: the result means nothing under
 *  one. */
std::size_t heapBytes();

}  // namespace test
