// Stands before libavutil's allocating functions as the effect calls them, to count and to let one fail.
#pragma once

namespace test {

/** Watches the arrays and transforms made in its lifetime. One at a time, on one thread. */
class LibavutilWatch {
  public:
    /** @param failing the array or transform that gets no memory, counted from 1 together; 0: none. */
    explicit LibavutilWatch(int failing = 0);
    ~LibavutilWatch();
    LibavutilWatch(const LibavutilWatch&) = delete;
    LibavutilWatch& operator=(const LibavutilWatch&) = delete;

    int requested() const;
    /** Made and not freed since the start. */
    int alive() const;
};

}  // namespace test
