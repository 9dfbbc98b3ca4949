#pragma once

namespace test {

/** Makes the conversion graphs fail on demand, on the calling thread. Each number counts down to 0. */
struct GraphFaults {
    /** Filters "aformat" that start without their options, as when libavfilter has no memory to parse them.
     */
    int input_formats_to_lose = 0;
    int output_formats_to_lose = 0;
    int input_reads_to_fail = 0;  // what the graph holds stays inside
    int read_error = 0;           // the negative AVERROR of those reads
};

/** In force while it lives. One at a time. */
class WithGraphFaults {
  public:
    WithGraphFaults();
    ~WithGraphFaults();
    WithGraphFaults(const WithGraphFaults&) = delete;
    WithGraphFaults& operator=(const WithGraphFaults&) = delete;
    GraphFaults* operator->() { return &faults_; }

  private:
    GraphFaults faults_;
};

}  // namespace test
