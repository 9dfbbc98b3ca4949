// Interposes the allocating functions of libavutil that the effect calls, to count requests and fail one.
#pragma once

namespace test {

/** Counts the arrays and transforms made during its lifetime. Only one object may exist at a time, on one
 *  thread. */
class LibavutilWatch {
  public:
    /** @param failing number of the request that fails, counted from 1 over arrays and transforms together;
     *                 0: none */
    explicit LibavutilWatch(int failing = 0);
    ~LibavutilWatch();
    LibavutilWatch(const LibavutilWatch&) = delete;
    LibavutilWatch& operator=(const LibavutilWatch&) = delete;

    /** Requests since the start, including a failed one. */
    int requested() const;
    /** Arrays and transforms made since the start and not yet freed. */
    int alive() const;
};

}  // namespace test
