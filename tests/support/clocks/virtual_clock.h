#pragma once

#include <atomic>
#include <chrono>

namespace test {

/** Clocks that stand still until the test moves them. While an object lives, the thread that made it reads
 *  them in place of the system's: the monotonic clock, which is std::chrono::steady_clock, and the processor
 *  time of any other thread. Both begin at 0. Other threads read the system's clocks.
 *
 *  virtual_clock.cpp replaces clock_gettime for all code of the program, its shared libraries included. Only
 *  one object may live at a time. */
class VirtualClock {
  public:
    VirtualClock();
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    /** Lets time pass in which no thread works. Any thread may call it. */
    void wait(std::chrono::nanoseconds time) { monotonic_ += time.count(); }
    /** Lets time pass in which a thread works. Any thread may call it. */
    void work(std::chrono::nanoseconds time) {
        processor_ += time.count();
        wait(time);
    }

    std::chrono::nanoseconds monotonic() const { return std::chrono::nanoseconds(monotonic_); }
    std::chrono::nanoseconds processor() const { return std::chrono::nanoseconds(processor_); }

  private:
    std::atomic<std::chrono::nanoseconds::rep> monotonic_ = 0;
    std::atomic<std::chrono::nanoseconds::rep> processor_ = 0;
};

}  // namespace test
