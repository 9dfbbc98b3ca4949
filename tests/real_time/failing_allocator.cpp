#include "failing_allocator.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

bool is_watching = false;
int failing = 0;
int requests = 0;
int living = 0;
std::size_t requested_bytes = 0;

// Fills new memory, which would otherwise often hold zeros fresh from the system.
constexpr int kUsedBefore = 0xA5;

void* allocate(std::size_t bytes, std::size_t alignment = alignof(std::max_align_t)) noexcept {
    if (is_watching) {
        ++requests;
        requested_bytes += bytes;
        if (requests == failing) return nullptr;
    }
    const std::size_t whole_units = (std::max(bytes, std::size_t{1}) + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, whole_units);
    if (memory == nullptr) return nullptr;
    if (is_watching) ++living;
    std::memset(memory, kUsedBefore, bytes);
    return memory;
}

void* allocateOrThrow(std::size_t bytes) {
    void* const memory = allocate(bytes);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept {
    if (is_watching && memory != nullptr) --living;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}

namespace test {

AllocationWatch::AllocationWatch(int failing_allocation) {
    failing = failing_allocation;
    requests = 0;
    living = 0;
    requested_bytes = 0;
    is_watching = true;
}

AllocationWatch::~AllocationWatch() {
    is_watching = false;
}

int AllocationWatch::requested() const {
    return requests;
}
std::size_t AllocationWatch::bytes() const {
    return requested_bytes;
}
int AllocationWatch::alive() const {
    return living;
}

}  // namespace test
