#pragma once

namespace test {

/** Makes memory requests of the FFmpeg libraries fail and counts them while it lives. It affects only the
 *  requests of the thread that created it. Only one may live at a time.
 *
 *  Requests inside `swr_init` neither count nor fail. libswresample 5.1 does not check there whether it got
 *  its converter, and divides by zero at the first sample (docs/known-limits.md). No caller can prevent that.
 */
class FailingMemory {
  public:
    enum class Which { kOne, kAllFromThere };

    /** @param first Number of the first request that fails, counted from 1. */
    FailingMemory(int first, Which which);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /** Returns the number of requests so far. */
    int requests() const;
};

}  // namespace test
