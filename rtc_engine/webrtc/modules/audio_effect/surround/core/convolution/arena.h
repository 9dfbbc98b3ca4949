// One block of memory for the arrays that every call of a handle goes through.
//
// Lying together they need few entries of the processor's address cache, and where they fill most of a huge
// page of 2 MiB they get one, if the system has any to give: the time of a call then no longer depends on
// which pages the process happened to get.
//
// Use: Arena arena(Arena::bytesOf<float>(n) + ..); float* a = arena.take<float>(n); .. freed with the arena.
#pragma once

#include <cstddef>

namespace sonivex {

class Arena {
  public:
    /** The widest vector, and a cache line. */
    static constexpr std::size_t kAlignment = 64;

    /** Throws std::bad_alloc when memory runs out. */
    explicit Arena(std::size_t bytes);
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena();

    /** The bytes that an array takes of an arena. */
    template <typename Number>
    static constexpr std::size_t bytesOf(std::size_t count) {
        return (count * sizeof(Number) + kAlignment - 1) / kAlignment * kAlignment;
    }

    /** The next array: zeros, aligned. Throws std::bad_alloc when there is no room left. */
    template <typename Number>
    Number* take(std::size_t count) {
        return static_cast<Number*>(takeBytes(bytesOf<Number>(count)));
    }

    /** Bytes that arrays can still take. */
    std::size_t room() const { return room_; }

  private:
    void* takeBytes(std::size_t bytes);

    std::byte* memory_ = nullptr;
    std::size_t bytes_ = 0;
    std::size_t room_ = 0;
    bool is_mapped_ = false;
};

}  // namespace sonivex
