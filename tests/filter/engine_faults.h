#pragma once

#include <vector>

namespace test {

/** What a dialogue enhancer was made with. */
struct DialogueSettings {
    int channels;
    int rate_hz;
    double gain_floor;
    double gain_scale;
    double voice;
    bool operator==(const DialogueSettings&) const = default;
};

/** Makes the effects' functions fail on demand, and keeps what they were called with. */
struct EngineFaults {
    int creates_to_fail = 0;
    int process_result = 0;  // negative: returned instead of calling the engine
    int creates = 0;
    int releases = 0;
    std::vector<int> channels_of_calls;
    int surround_creates_to_fail = 0;
    int surround_result = 0;  // as `processResult`
    int surround_creates = 0;
    int surround_releases = 0;
    int dialogue_creates_to_fail = 0;
    int dialogue_result = 0;  // as `processResult`
    std::vector<DialogueSettings> dialogue_creates;
    int dialogue_releases = 0;
};

/** The record that the wrapped functions go by; fresh for each test that calls `resetEngineFaults`. */
EngineFaults& engineFaults();
void resetEngineFaults();

}  // namespace test
