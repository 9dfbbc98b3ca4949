// One block of memory for the arrays that every call of a handle touches.
//
// Arrays side by side need few entries of the processor's address cache (TLB). Where they fill most of a huge
// page of 2 MiB, the arena asks the system for one. The time of a call then no longer depends on which pages
// the process happened to get.
//
// Use: Arena arena(Arena::bytesOf<float>(n) + ..); float* a = arena.take<float>(n); its destructor frees all.
#pragma once

#include <cstddef>

namespace sonivex {

class Arena {
  public:
    /** Alignment of every array in bytes: the widest vector, and a cache line. */
    static constexpr std::size_t kAlignment = 64;

    /** Allocates and zeroes the memory.
     *  @param bytes the sum of bytesOf over the arrays to take.
     *  Throws std::bad_alloc when memory runs out. [any] not real-time safe: allocates */
    explicit Arena(std::size_t bytes);
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    /** Frees the memory of all arrays. [any] not real-time safe */
    ~Arena();

    /** Bytes that an array of `count` elements takes of an arena: a multiple of kAlignment.
     *  [any, concurrent] real-time safe */
    template <typename Number>
    static constexpr std::size_t bytesOf(std::size_t count) {
        return (count * sizeof(Number) + kAlignment - 1) / kAlignment * kAlignment;
    }

    /** Takes the next array of `count` elements: zeros, aligned to kAlignment, owned by the arena.
     *  Throws std::bad_alloc when too little room is left. [any] real-time safe unless it throws */
    template <typename Number>
    Number* take(std::size_t count) {
        return static_cast<Number*>(takeBytes(bytesOf<Number>(count)));
    }

    /** Bytes that further arrays can take. It starts at the constructor's `bytes` or more: whole pages count.
     *  [any] real-time safe */
    std::size_t room() const { return room_; }

  private:
    void* takeBytes(std::size_t bytes);

    std::byte* memory_ = nullptr;
    std::size_t bytes_ = 0;
    std::size_t room_ = 0;
    bool is_mapped_ = false;
};

}  // namespace sonivex
