#pragma once

#include <cstddef>

namespace test {

/** Returns the bytes that this process holds: allocated memory with the allocator's overhead, plus anonymous
 *  mappings.
 *
 *  The allocator does not see memory that the program maps itself. heap_bytes.cpp therefore replaces mmap and
 *  munmap for all code of the program except its shared libraries, and counts the mapped bytes. The allocator
 *  reaches the kernel without these two functions, so no byte is counted twice.
 *
 *  A sanitizer replaces the allocator and both functions, so the result is meaningless under one. */
std::size_t heapBytes();

}  // namespace test
