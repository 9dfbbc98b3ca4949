#pragma once

#include <cstdint>
#include <deque>

namespace test {

/** Makes what the filter asks of the system fail on demand, on the calling thread, and counts. */
struct SystemFaults {
    int writesToInterrupt = 0;  ///< by a signal, before anything is written
    int writeError = 0;         ///< errno of every write; 0: they go through
    int syncsToInterrupt = 0;
    int syncError = 0;        ///< errno of every fsync; 0: they go through
    int syncs = 0;            ///< fsync calls so far
    int threadsToRefuse = 0;  ///< qfThreads that do not start
    int sleeps = 0;           ///< qf_msleep calls so far; none of them takes its time
    bool hasNoRandomness = false;
    std::deque<uint32_t> randomNumbers{};  ///< given out instead of random ones, as far as they go
};

/** In force while it lives. One at a time. */
class WithSystemFaults {
  public:
    WithSystemFaults();
    ~WithSystemFaults();
    WithSystemFaults(const WithSystemFaults&) = delete;
    WithSystemFaults& operator=(const WithSystemFaults&) = delete;
    SystemFaults* operator->() { return &mFaults; }

  private:
    SystemFaults mFaults;
};

}  // namespace test
