#include "soak/process_state.h"

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace test {

namespace {

constexpr std::chrono::milliseconds kWait(10);
constexpr int kMostWaits = 100;

int entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

std::int64_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::int64_t all_pages = 0;
    std::int64_t resident_pages = 0;
    file >> all_pages >> resident_pages;
    return resident_pages * sysconf(_SC_PAGESIZE);
}

}  // namespace

ProcessState processState(int threads) {
    ProcessState state;
    state.memory = liveMemory();  // first, because the questions below allocate
    for (int waits = 0; waits < kMostWaits; ++waits) {
        state.threads = entriesOf("/proc/self/task");
        if (state.threads <= threads) break;
        std::this_thread::sleep_for(kWait);
    }
    state.descriptors = entriesOf("/proc/self/fd") - 1;  // one reads the folder
    malloc_trim(0);
    state.resident_bytes = residentBytes();
    return state;
}

}  // namespace test
