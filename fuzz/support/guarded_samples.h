#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "support/promise.h"

namespace fuzz {

/** A block of samples for a function to write, between two zones that it must leave alone. */
template <typename Sample>
class GuardedSamples {
  public:
    /** Fills the block and its guards with `mark`. */
    GuardedSamples(std::size_t count, Sample mark) : mark_(mark), memory_(count + 2 * kGuard, mark) {}

    Sample* data() { return memory_.data() + kGuard; }
    std::span<Sample> samples() { return {data(), memory_.size() - 2 * kGuard}; }

    /** Requires that nothing was written outside the block. */
    void requireWholeGuards() const {
        require(areMarks(memory_.begin(), memory_.begin() + kGuard), "no write before the output");
        require(areMarks(memory_.end() - kGuard, memory_.end()), "no write behind the output");
    }
    /** Requires that nothing was written at all. */
    void requireUntouched() const {
        require(areMarks(memory_.begin(), memory_.end()), "a refused call writes nothing");
    }

  private:
    template <typename Iterator>
    bool areMarks(Iterator first, Iterator last) const {
        return std::all_of(first, last, [this](Sample sample) { return sample == mark_; });
    }

    static constexpr std::ptrdiff_t kGuard = 32;
    Sample mark_;
    std::vector<Sample> memory_;
};

}  // namespace fuzz
