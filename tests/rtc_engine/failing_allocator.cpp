#include "failing_allocator.h"

#include <cstdlib>
#include <new>

namespace {

bool is_watching = false;
int failing = 0;
int requests = 0;
int living = 0;

void* allocate(std::size_t bytes) noexcept {
    if (is_watching) {
        ++requests;
        if (requests == failing) return nullptr;
    }
    void* const memory = std::malloc(bytes == 0 ? 1 : bytes);
    if (is_watching && memory != nullptr) ++living;
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
    is_watching = true;
}

AllocationWatch::~AllocationWatch() {
    is_watching = false;
}

int AllocationWatch::requested() const {
    return requests;
}
int AllocationWatch::alive() const {
    return living;
}

}  // namespace test
