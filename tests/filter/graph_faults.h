#pragma once

namespace test {

/** Makes the conversion graphs fail on demand, on the calling thread. Each number counts down to 0. */
struct GraphFaults {
    /** Filters "aformat" that start without their options, as when libavfilter has no memory to parse them.
     */
    int inputFormatsToLose = 0;
    int outputFormatsToLose = 0;
    int inputReadsToFail = 0;  ///< what the graph holds stays inside
    int readError = 0;         ///< the negative AVERROR of those reads
};

/** In force while it lives. One at a time. */
class WithGraphFaults {
  public:
    WithGraphFaults();
    ~WithGraphFaults();
    WithGraphFaults(const WithGraphFaults&) = delete;
    WithGraphFaults& operator=(const WithGraphFaults&) = delete;
    GraphFaults* operator->() { return &mFaults; }

  private:
    GraphFaults mFaults;
};

}  // namespace test
