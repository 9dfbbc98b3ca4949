// Replaces the C allocator of the program that links it, to make requests for memory fail: those of our code,
// of the C++ library and of libraries such as FFmpeg's.
//
//     FailingMemory memory(7, FailingMemory::Which::kOne);
//     memory.during([&] { filter->push(frame, 0); });  // only requests in here count
//     if (memory.requests() < 7) …                     // the call made fewer requests
#pragma once

namespace test {

/** Counts requests for memory and makes some of them fail, on the thread that calls `during`. Several
 *  threads may call it, one after the other. Only one object may live at a time.
 *
 *  Requests inside `swr_init` neither count nor fail, unless `onlyInsideSwrInit` asks for it.
 *  libswresample 5.1 does not check there whether it got its converter, and divides by zero at the first
 *  sample (docs/known-limits.md). No caller can prevent that. */
class FailingMemory {
  public:
    enum class Which { kOne, kAllFromThere };

    /** @param first Number of the first request that fails, counted from 1; 0: none fails. */
    FailingMemory(int first, Which which);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /** Runs `work` with failing memory, and returns its result. */
    template <typename Work>
    auto during(Work&& work) {
        const Counting counting;
        return work();
    }

    /** Counts and fails only the functions through which libavutil gets all of its memory, and C++ none. */
    void onlyOfLibavutil();
    /** Counts and fails only requests inside `swr_init`, instead of all others. */
    void onlyInsideSwrInit();

    /** Returns the number of requests so far. */
    int requests() const;
    /** Returns which requests fail. */
    Which which() const;
    /** Returns true if a request has failed. */
    bool hasFailed() const;
    /** Returns the blocks that were allocated inside `during`, less those that were freed there and those
     *  that libavutil keeps when it cannot make a transform (docs/known-limits.md). */
    int alive() const;

  private:
    struct Counting {
        Counting();
        ~Counting();
    };
};

}  // namespace test
