#pragma once

namespace test {

/** Lets requests of the FFmpeg libraries for memory fail, and counts them: those of the thread that makes it,
 * while it lives. One at a time.
 *
 *  Requests inside `swr_init` neither count nor fail. libswresample 5.1 does not look whether it got its
 * converter there, and divides by zero at the first sample (docs/known-limits.md): no caller can help that.
 */
class FailingMemory {
  public:
    enum class Which { One, AllFromThere };

    /** @param first the first request that gets no memory, counted from 1. */
    FailingMemory(int first, Which which);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    int requests() const;
};

}  // namespace test
