#pragma once

#include <vector>

namespace test {

/** What a dialogue enhancer was made with. */
struct DialogueSettings {
    int channels;
    int rate_hz;
    double gainFloor;
    double gainScale;
    double voice;
    bool operator==(const DialogueSettings&) const = default;
};

/** Makes the effects' functions fail on demand, and keeps what they were called with. */
struct EngineFaults {
    int createsToFail = 0;
    int processResult = 0;  ///< negative: returned instead of calling the engine
    int creates = 0;
    int releases = 0;
    std::vector<int> channelsOfCalls;
    int surroundCreatesToFail = 0;
    int surroundResult = 0;  ///< as `processResult`
    int surroundCreates = 0;
    int surroundReleases = 0;
    int dialogueCreatesToFail = 0;
    int dialogueResult = 0;  ///< as `processResult`
    std::vector<DialogueSettings> dialogueCreates;
    int dialogueReleases = 0;
};

/** The record that the wrapped functions go by; fresh for each test that calls `resetEngineFaults`. */
EngineFaults& engineFaults();
void resetEngineFaults();

}  // namespace test
