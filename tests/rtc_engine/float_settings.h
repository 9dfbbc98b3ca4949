// Floating-point settings that a host may have made for its threads.
#pragma once

#include <cfenv>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

namespace test {

/** Treatment of denormals: kZero replaces them by zero, both as results (flush to zero) and as operands
 *  (denormals are zero). */
enum class SmallNumbers { kKept, kZero };

/** Changes the calling thread's floating-point settings for the lifetime of the object. */
class FloatSettings {
  public:
    /** @param rounding FE_TONEAREST, FE_TOWARDZERO, FE_UPWARD or FE_DOWNWARD */
    FloatSettings(SmallNumbers small_numbers, int rounding) {
        std::fegetenv(&former_);
        if (small_numbers == SmallNumbers::kZero) makeSmallNumbersZero();
        std::fesetround(rounding);
    }
    ~FloatSettings() { std::fesetenv(&former_); }
    FloatSettings(const FloatSettings&) = delete;
    FloatSettings& operator=(const FloatSettings&) = delete;

  private:
    static void makeSmallNumbersZero() {
#if defined(__x86_64__) || defined(__i386__)
        _mm_setcsr(_mm_getcsr() | 0x8040U);
#elif defined(__aarch64__)
        std::uint64_t control = 0;
        __asm__ volatile("mrs %0, fpcr" : "=r"(control));
        control |= std::uint64_t{1} << 24;
        __asm__ volatile("msr fpcr, %0" : : "r"(control));
#endif
    }

    std::fenv_t former_{};
};

}  // namespace test
