#pragma once

#include <functional>
#include <vector>

#include "support/effects/dialogue_settings.h"

namespace test {

/** Arguments of aem_CreateNormalizer. */
struct NormalizerSettings {
    int channels;
    int rate_hz;
    bool operator==(const NormalizerSettings&) const = default;
};

/** Arguments of aem_CreateSurround. */
struct SurroundSettings {
    int channels;
    int rate_hz;
    int type;
    int mode;
    int limiter;
    bool operator==(const SurroundSettings&) const = default;
};

/** Makes the effects' functions fail on demand, and records their calls. */
struct EngineFaults {
    int creates_to_fail = 0;
    int process_result = 0;  // negative: returned instead of a call of the engine
    int creates = 0;
    int releases = 0;
    std::vector<NormalizerSettings> normalizer_settings;  // arguments of each creation
    std::vector<int> channels_of_calls;
    std::function<void()> during_process;  // runs at the end of each call of the normalizer
    std::function<void()> during_release;  // runs before each release of the normalizer
    int surround_creates_to_fail = 0;
    int surround_result = 0;  // like `process_result`
    int surround_creates = 0;
    std::vector<SurroundSettings> surround_settings;  // arguments of each creation
    int surround_releases = 0;
    int dialogue_creates_to_fail = 0;
    int dialogue_result = 0;                         // like `process_result`
    std::vector<DialogueSettings> dialogue_creates;  // arguments of each creation
    int dialogue_releases = 0;
};

/** Returns the record that the wrapped functions obey and update. */
EngineFaults& engineFaults();
/** Resets the record. Each test that uses it calls this first. */
void resetEngineFaults();

}  // namespace test
