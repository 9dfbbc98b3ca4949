#pragma once

#include <cstdint>
#include <deque>

namespace test {

/** Makes what the filter asks of the system fail on demand, on the calling thread, and counts. */
struct SystemFaults {
    int writes_to_interrupt = 0;  // by a signal, before anything is written
    int write_error = 0;          // errno of every write; 0: they go through
    int syncs_to_interrupt = 0;
    int sync_error = 0;         // errno of every fsync; 0: they go through
    int syncs = 0;              // fsync calls so far
    int threads_to_refuse = 0;  // qfThreads that do not start
    int sleeps = 0;             // qf_msleep calls so far; none of them takes its time
    bool has_no_randomness = false;
    std::deque<uint32_t> random_numbers{};  // given out instead of random ones, as far as they go
};

/** In force while it lives. One at a time. */
class WithSystemFaults {
  public:
    WithSystemFaults();
    ~WithSystemFaults();
    WithSystemFaults(const WithSystemFaults&) = delete;
    WithSystemFaults& operator=(const WithSystemFaults&) = delete;
    SystemFaults* operator->() { return &faults_; }

  private:
    SystemFaults faults_;
};

}  // namespace test
