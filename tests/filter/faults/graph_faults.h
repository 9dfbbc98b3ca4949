#pragma once

namespace test {

/** Makes the conversion graphs fail on demand, on the calling thread. Each counter counts down to 0. */
struct GraphFaults {
    /** Number of "aformat" filters that start without their options, as they do when libavfilter has no
     *  memory to parse them. */
    int input_formats_to_lose = 0;
    int output_formats_to_lose = 0;
    int input_configs_to_fail = 0;
    int output_configs_to_fail = 0;
    int input_pushes_to_fail = 0;  // the graph takes nothing
    int output_pushes_to_fail = 0;
    int input_reads_to_fail = 0;  // the samples stay inside the graph
    int output_reads_to_fail = 0;
    int error = 0;  // negative AVERROR that all calls but those for formats return
};

/** Applies its faults while it lives. Only one may live at a time. */
class WithGraphFaults {
  public:
    WithGraphFaults();
    ~WithGraphFaults();
    WithGraphFaults(const WithGraphFaults&) = delete;
    WithGraphFaults& operator=(const WithGraphFaults&) = delete;
    GraphFaults* operator->() { return &faults_; }
    GraphFaults& operator*() { return faults_; }

  private:
    GraphFaults faults_;
};

}  // namespace test
