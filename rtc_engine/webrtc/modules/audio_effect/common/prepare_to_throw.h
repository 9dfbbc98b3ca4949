// Lets a thread throw std::bad_alloc although there is no memory.
//
// The C++ library keeps the exceptions of a thread in memory that the thread gets with its first exception.
// In a C program that loaded that library at run time, the loader ends the process if there is none then.
// So a thread throws once while there is memory:
//
//     if (!prepareToThrow()) return nullptr;  // as without memory
//     try { .. } catch (const std::bad_alloc&) { return nullptr; }
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace sonivex {

/** Makes the calling thread ready to throw. Later calls on the same thread are short: they need no more
 *  memory than they give back.
 *  @return false if there is no memory for it. The thread must then report that without an exception.
 *  [any, concurrent] not real-time safe: allocates */
[[nodiscard]] inline bool prepareToThrow() noexcept {
#if defined(__EMSCRIPTEN__)
    return true;  // a module of WebAssembly is built without exceptions
#else
    // The loader cannot report that it has no memory, so this asks before it. The C++ library needs less.
    constexpr std::size_t kRoom_bytes = 4096;
    void* const room = std::malloc(kRoom_bytes);
    if (room == nullptr) return false;
    asm volatile("" : : "r"(room) : "memory");  // keeps the compiler from leaving the question out
    std::free(room);
    // The unwinder finds and binds what it needs at the first exception.
    try {
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        return true;
    }
#endif
}

}  // namespace sonivex
