#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "sonivex/normalizer.h"
#include "support/signals.h"

namespace test {

struct ReleaseNormalizer {
    void operator()(void* handle) const { aem_ReleaseNormalizer(handle); }
};
using NormalizerPointer = std::unique_ptr<void, ReleaseNormalizer>;

/** Creates a normalizer and keeps the mixer's version line off the test's output.
 *  @param printed if not null, receives the line */
inline NormalizerPointer makeNormalizer(int channels, std::string* printed = nullptr) {
    testing::internal::CaptureStdout();
    NormalizerPointer handle(aem_CreateNormalizer(channels, 48000));
    const std::string text = testing::internal::GetCapturedStdout();
    if (printed != nullptr) *printed = text;
    EXPECT_NE(handle, nullptr);
    return handle;
}

/** Processes `in` in calls of `frames` each and returns the output. The remainder of the input after the last
 *  whole call is not processed. */
inline Pcm normalized(void* handle, const Pcm& in, int channels, int frames) {
    Pcm out;
    const auto call_samples = static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames);
    for (std::size_t done = 0; done + call_samples <= in.size(); done += call_samples) {
        Pcm block(call_samples, -1);
        EXPECT_EQ(aem_ProcessNormalizer(handle, in.data() + done, block.data(), frames, channels),
                  static_cast<int>(call_samples));
        out.insert(out.end(), block.begin(), block.end());
    }
    return out;
}

}  // namespace test
