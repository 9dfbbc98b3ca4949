#include "arena.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace sonivex {
namespace {

constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;

#if defined(__linux__)
// Most bytes of a huge page that may stay unused: the handle holds them for speed alone.
constexpr std::size_t kMaxUnusedBytes = kHugePageBytes / 8;

std::size_t hugePagesOf(std::size_t bytes) {
    return (bytes + kMaxUnusedBytes) / kHugePageBytes;
}

// Maps memory at a huge-page boundary and asks the system to back its first pages with huge ones, which the
// system may decline. Returns null if the system gives no memory.
std::byte* mapWithHugePages(std::size_t bytes, std::size_t huge_pages) {
    const std::size_t reserved = bytes + kHugePageBytes;
    void* const map = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED) return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(map);
    const std::size_t before = (kHugePageBytes - address % kHugePageBytes) % kHugePageBytes;
    std::byte* const memory = static_cast<std::byte*>(map) + before;
    if (before > 0) munmap(map, before);
    munmap(memory + bytes, reserved - before - bytes);
    madvise(memory, huge_pages * kHugePageBytes, MADV_HUGEPAGE);
    return memory;
}

std::size_t wholePages(std::size_t bytes) {
    const auto page_bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page_bytes - 1) / page_bytes * page_bytes;
}
#endif

}  // namespace

Arena::Arena(std::size_t bytes) {
    if (bytes > std::numeric_limits<std::size_t>::max() - 2 * kHugePageBytes) throw std::bad_alloc();
#if defined(__linux__)
    if (const std::size_t huge_pages = hugePagesOf(bytes); huge_pages > 0) {
        bytes_ = std::max(wholePages(bytes), huge_pages * kHugePageBytes);
        memory_ = mapWithHugePages(bytes_, huge_pages);
        is_mapped_ = memory_ != nullptr;
    }
#endif
    if (!is_mapped_) {
        bytes_ = bytes;
        memory_ = static_cast<std::byte*>(::operator new (bytes, std::align_val_t{kAlignment}, std::nothrow));
        if (memory_ == nullptr) throw std::bad_alloc();
    }
    // Mapped memory is zero already, but writing to it makes the system supply every page now. No call of an
    // effect then waits for a page.
    std::memset(memory_, 0, bytes_);
    room_ = bytes_;
}

Arena::~Arena() {
#if defined(__linux__)
    if (is_mapped_) {
        munmap(memory_, bytes_);
        return;
    }
#endif
    ::operator delete (memory_, std::align_val_t{kAlignment});
}

void* Arena::takeBytes(std::size_t bytes) {
    if (bytes > room_) throw std::bad_alloc();
    void* const array = memory_ + (bytes_ - room_);
    room_ -= bytes;
    return array;
}

}  // namespace sonivex
