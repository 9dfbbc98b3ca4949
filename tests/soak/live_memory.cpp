#include "soak/live_memory.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

// The C library's own names of its allocator.
extern "C" {
void* __libc_malloc(size_t bytes);                      // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t count, size_t bytes);        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, size_t bytes);       // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(size_t alignment, size_t bytes);  // NOLINT(bugprone-reserved-identifier)
void __libc_free(void* memory);                         // NOLINT(bugprone-reserved-identifier)
}

// The build hides symbols by default, but every library must find these.
#define FOR_LIBRARIES __attribute__((visibility("default")))

namespace {

constinit std::atomic<std::int64_t> live_blocks = 0;
constinit std::atomic<std::int64_t> live_bytes = 0;

void* counted(void* memory) {
    if (memory != nullptr) {
        live_blocks.fetch_add(1, std::memory_order_relaxed);
        live_bytes.fetch_add(static_cast<std::int64_t>(malloc_usable_size(memory)),
                             std::memory_order_relaxed);
    }
    return memory;
}

void discount(void* memory) {
    if (memory == nullptr) return;
    live_blocks.fetch_sub(1, std::memory_order_relaxed);
    live_bytes.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(memory)), std::memory_order_relaxed);
}

}  // namespace

extern "C" {

FOR_LIBRARIES void* malloc(size_t bytes) noexcept {
    return counted(__libc_malloc(bytes));
}

FOR_LIBRARIES void* calloc(size_t count, size_t bytes) noexcept {
    return counted(__libc_calloc(count, bytes));
}

FOR_LIBRARIES void* realloc(void* memory, size_t bytes) noexcept {
    const auto before = static_cast<std::int64_t>(malloc_usable_size(memory));  // 0 for null
    void* const moved = __libc_realloc(memory, bytes);
    const bool is_freed = memory != nullptr && bytes == 0;
    if (moved == nullptr && !is_freed) return nullptr;  // `memory` stays as it was
    if (memory != nullptr) {
        live_blocks.fetch_sub(1, std::memory_order_relaxed);
        live_bytes.fetch_sub(before, std::memory_order_relaxed);
    }
    return counted(moved);
}

FOR_LIBRARIES void free(void* memory) noexcept {
    discount(memory);
    __libc_free(memory);
}

FOR_LIBRARIES void* memalign(size_t alignment, size_t bytes) noexcept {
    return counted(__libc_memalign(alignment, bytes));
}

FOR_LIBRARIES void* aligned_alloc(size_t alignment, size_t bytes) noexcept {
    return counted(__libc_memalign(alignment, bytes));
}

FOR_LIBRARIES int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept {
    void* const made = counted(__libc_memalign(alignment, bytes));
    if (made == nullptr) return ENOMEM;
    *memory = made;
    return 0;
}

}  // extern "C"

#undef FOR_LIBRARIES

namespace test {

LiveMemory liveMemory() {
    return {live_blocks, live_bytes};
}

}  // namespace test
