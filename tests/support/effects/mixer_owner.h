#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "mixer.h"

namespace test {

struct FreeMixer {
    void operator()(MixerState* mixer) const { mixfree(mixer); }
};
using MixerPointer = std::unique_ptr<MixerState, FreeMixer>;

/** Creates a mixer with mixcreat and keeps its version line off the test's output.
 *  @param printed if not null, receives the line */
inline MixerPointer createMixer(std::string* printed = nullptr) {
    MixerState* mixer = nullptr;
    testing::internal::CaptureStdout();
    EXPECT_EQ(mixcreat(&mixer), 0);
    const std::string text = testing::internal::GetCapturedStdout();
    if (printed != nullptr) *printed = text;
    return MixerPointer(mixer);
}

/** Creates a mixer and initializes it; the defaults are the normalizer's. */
inline MixerPointer makeMixer(int channels = 1, int per_sample_detect = 0, float level = 1.0F) {
    MixerPointer mixer = createMixer();
    mixinit(mixer.get(), channels, per_sample_detect, level);
    return mixer;
}

}  // namespace test
