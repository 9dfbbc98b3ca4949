#pragma once

#include <cstdint>
#include <deque>

namespace test {

/** Makes the filter's system calls fail on demand, on the calling thread, and counts them. */
struct SystemFaults {
    int writes_to_interrupt = 0;  // writes that fail with EINTR before anything is written
    int write_error = 0;          // errno of every write; 0: writes succeed
    int syncs_to_interrupt = 0;
    int sync_error = 0;         // errno of every fsync; 0: calls succeed
    int syncs = 0;              // fsync calls so far, without interrupted ones
    int threads_to_refuse = 0;  // starts of a qfThread that fail
    int sleeps = 0;             // qf_msleep calls so far; each returns at once
    int64_t slept_ms = 0;       // sum of their arguments
    bool has_no_randomness = false;
    std::deque<uint32_t> random_numbers{};  // replace the next numbers of std::random_device
};

/** Applies its faults while it lives. Only one may live at a time. */
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
