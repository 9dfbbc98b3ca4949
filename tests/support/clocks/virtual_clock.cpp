#include "virtual_clock.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace test {
namespace {

thread_local const VirtualClock* clock_in_force = nullptr;

timespec timeOf(std::chrono::nanoseconds time) {
    const auto whole_s = std::chrono::floor<std::chrono::seconds>(time);
    return {.tv_sec = whole_s.count(), .tv_nsec = (time - whole_s).count()};
}

// The system's numbers for the clocks of single threads and processes are negative.
bool isProcessorTime(clockid_t id) {
    return id < 0;
}

}  // namespace

VirtualClock::VirtualClock() {
    clock_in_force = this;
}

VirtualClock::~VirtualClock() {
    clock_in_force = nullptr;
}

}  // namespace test

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t id, timespec* time) noexcept {
    const test::VirtualClock* clock = test::clock_in_force;
    if (clock != nullptr && id == CLOCK_MONOTONIC) {
        *time = test::timeOf(clock->monotonic());
        return 0;
    }
    if (clock != nullptr && test::isProcessorTime(id)) {
        *time = test::timeOf(clock->processor());
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, id, time));
}
