#include "support/memory/heap_bytes.h"

#include <malloc.h>

#ifdef SONIVEX_COUNTS_MAPPINGS

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>

namespace {

static_assert(sizeof(off_t) == sizeof(long),
              "the system call takes its offset in bytes only on 64-bit systems");

std::uintptr_t addressOf(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

// The kernel maps and unmaps whole pages.
std::uintptr_t roundedToPages(std::size_t bytes) {
    const auto page_bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page_bytes - 1) / page_bytes * page_bytes;
}

// Records the program's anonymous mappings as address ranges that do not overlap. The array has a fixed size
// because some test programs replace the allocator to count its calls.
class Mappings {
  public:
    // The lock covers the system call. Otherwise another thread could get the same addresses before this
    // record knows that they are free.
    void* map(void* address, std::size_t bytes, int protection, int flags, int file, off_t offset) {
        const std::lock_guard<std::mutex> lock(mutex_);
        const long result = syscall(SYS_mmap, address, bytes, protection, flags, file, offset);
        if (result == -1) return MAP_FAILED;
        const Range range{static_cast<std::uintptr_t>(result),
                          static_cast<std::uintptr_t>(result) + roundedToPages(bytes)};
        remove(range);  // MAP_FIXED replaces any mapping at these addresses
        if ((flags & MAP_ANONYMOUS) != 0) append(range);
        return std::bit_cast<void*>(result);
    }

    int unmap(void* address, std::size_t bytes) {
        const std::lock_guard<std::mutex> lock(mutex_);
        const long result = syscall(SYS_munmap, address, bytes);
        if (result == 0) remove({addressOf(address), addressOf(address) + roundedToPages(bytes)});
        return static_cast<int>(result);
    }

    std::size_t bytes() {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < count_; ++i) bytes += ranges_[i].end - ranges_[i].begin;
        return bytes;
    }

  private:
    struct Range {
        std::uintptr_t begin;
        std::uintptr_t end;
    };

    void append(Range range) {
        if (range.begin >= range.end) return;
        if (count_ == std::size(ranges_)) {
            std::fputs("heap_bytes: too many mappings to count; enlarge Mappings::ranges_\n", stderr);
            std::abort();
        }
        ranges_[count_++] = range;
    }

    // The hole may cover part of a mapping, a whole one, several or none. The parts outside the hole remain.
    void remove(Range hole) {
        std::size_t i = 0;
        while (i < count_) {
            const Range range = ranges_[i];
            if (range.end <= hole.begin || hole.end <= range.begin) {
                ++i;
                continue;
            }
            ranges_[i] = ranges_[--count_];
            append({range.begin, std::min(range.end, hole.begin)});
            append({std::max(range.begin, hole.end), range.end});
        }
    }

    std::mutex mutex_;
    Range ranges_[1024] = {};
    std::size_t count_ = 0;
};

// Constant initialization makes the record ready before any code of the program runs.
constinit Mappings program_mappings;

}  // namespace

extern "C" void* mmap(void* address, std::size_t bytes, int protection, int flags, int file,
                      off_t offset) noexcept {
    return program_mappings.map(address, bytes, protection, flags, file, offset);
}

extern "C" int munmap(void* address, std::size_t bytes) noexcept {
    return program_mappings.unmap(address, bytes);
}

#endif

namespace test {

std::size_t heapBytes() {
    const auto info = mallinfo2();
    std::size_t bytes = info.uordblks + info.hblkhd;
#ifdef SONIVEX_COUNTS_MAPPINGS
    bytes += program_mappings.bytes();
#endif
    return bytes;
}

}  // namespace test
