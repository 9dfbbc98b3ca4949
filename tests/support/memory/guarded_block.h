#pragma once

#include <algorithm>
#include <cstddef>

#include "support/signals/signals.h"

namespace test {

/** An output buffer between two guard zones, which reveal writes outside the buffer. */
class GuardedBlock {
  public:
    explicit GuardedBlock(std::size_t samples) : memory_(samples + 2 * kGuard, kMark) {}
    short* data() { return memory_.data() + kGuard; }
    bool guardsAreWhole() const {
        return std::count(memory_.begin(), memory_.begin() + kGuard, kMark) == kGuard &&
               std::count(memory_.end() - kGuard, memory_.end(), kMark) == kGuard;
    }
    bool isUntouched() const {
        return std::count(memory_.begin(), memory_.end(), kMark) ==
               static_cast<std::ptrdiff_t>(memory_.size());
    }

  private:
    static constexpr std::ptrdiff_t kGuard = 64;
    static constexpr std::int16_t kMark = 0x5A5A;
    Pcm memory_;
};

}  // namespace test
