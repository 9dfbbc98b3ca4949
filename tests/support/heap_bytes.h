#pragma once

#include <malloc.h>

#include <cstddef>

namespace test {

/** What this process holds of the allocator, its overhead included. */
inline std::size_t heapBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace test
