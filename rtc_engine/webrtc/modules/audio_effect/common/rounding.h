// Rounds to nearest while an effect works, whatever rounding mode the host has set for the thread.
//
// The limiters feed back rounded values, so another rounding mode changes up to a quarter of the samples, by
// up to 24 steps. Every exported function of an effect that computes therefore begins with
//
//   const RoundingToNearest rounding;
//
// whose destructor restores the host's mode. Flush-to-zero and denormals-are-zero stay as the host has set
// them: they change no bit. A switch takes a few cycles.
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <xmmintrin.h>
#elif !defined(__aarch64__)
#include <cfenv>
#endif

namespace sonivex {

/** Keeps the current thread at round-to-nearest while the object lives. */
class RoundingToNearest {
  public:
    /** Saves the thread's rounding mode and sets round-to-nearest.
     *  [any, concurrent] real-time safe */
    RoundingToNearest() : hosts_mode_(mode()) {
        if (hosts_mode_ != kNearest) setMode(kNearest);
    }
    /** Restores the saved mode. Must run on the thread of the constructor.
     *  [any, concurrent] real-time safe */
    ~RoundingToNearest() {
        if (hosts_mode_ != kNearest) setMode(hosts_mode_);
    }
    RoundingToNearest(const RoundingToNearest&) = delete;
    RoundingToNearest& operator=(const RoundingToNearest&) = delete;

  private:
    // Keeps the compiler from moving memory accesses, and thus arithmetic on samples, across a mode change.
    static void keepOrder() { asm volatile("" ::: "memory"); }

#if defined(__SSE2__)
    using Mode = unsigned;
    static constexpr Mode kNearest = 0;
    static constexpr unsigned kModeBits = 0x6000;  // of MXCSR; std::fegetround reads the x87 unit instead

    static Mode mode() {
        return _mm_getcsr() & kModeBits;
    }
    static void setMode(Mode wanted) {
        keepOrder();
        _mm_setcsr((_mm_getcsr() & ~kModeBits) | wanted);
        keepOrder();
    }
#elif defined(__aarch64__)
    using Mode = std::uint64_t;
    static constexpr Mode kNearest = 0;
    static constexpr Mode kModeBits = std::uint64_t{3} << 22;  // of FPCR

    static std::uint64_t control() {
        std::uint64_t control = 0;
        asm volatile("mrs %0, fpcr" : "=r"(control));
        return control;
    }
    static Mode mode() {
        return control() & kModeBits;
    }
    static void setMode(Mode wanted) {
        keepOrder();
        asm volatile("msr fpcr, %0" ::"r"((control() & ~kModeBits) | wanted));
        keepOrder();
    }
#else
    using Mode = int;
    static constexpr Mode kNearest = FE_TONEAREST;

    static Mode mode() {
        return std::fegetround();
    }
    static void setMode(Mode wanted) {
        keepOrder();
        std::fesetround(wanted);
        keepOrder();
    }
#endif

    Mode hosts_mode_;
};

}  // namespace sonivex
