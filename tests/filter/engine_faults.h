#pragma once

#include <vector>

namespace test {

/** Makes the normalizer's functions fail on demand, and keeps what they were called with. */
struct EngineFaults {
    int createsToFail = 0;
    int processResult = 0;  ///< negative: returned instead of calling the engine
    int creates = 0;
    std::vector<int> channelsOfCalls;
};

/** The record that the wrapped functions go by; fresh for each test that calls `resetEngineFaults`. */
EngineFaults& engineFaults();
void resetEngineFaults();

}  // namespace test
