#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "sonivex/dialoguenhance.h"
#include "support/signals.h"

namespace test {

struct ReleaseDialogue {
    void operator()(void* handle) const { aem_ReleaseDialoguEnhance(handle); }
};
using DialoguePointer = std::unique_ptr<void, ReleaseDialogue>;

struct DialogueSettings {
    int rate_hz = 48000;
    double gain_floor = 1.0;
    double gain_scale = 1.0;
    double voice_level = 1.0;
};

inline DialoguePointer makeDialogue(const DialogueSettings& settings = {}) {
    DialoguePointer handle(aem_CreateDialoguEnhance(2, settings.rate_hz, settings.gain_floor,
                                                    settings.gain_scale, settings.voice_level));
    EXPECT_NE(handle, nullptr);
    return handle;
}

/** Processes `in` in calls of `frames` each and returns the output. The remainder of the input after the last
 *  whole call is not processed. */
inline Pcm enhanced(void* handle, const Pcm& in, int frames) {
    Pcm out;
    const std::size_t call_samples = 2 * static_cast<std::size_t>(frames);
    for (std::size_t done = 0; done + call_samples <= in.size(); done += call_samples) {
        Pcm block(call_samples, -1);
        EXPECT_EQ(aem_ProcessDialoguEnhance(handle, in.data() + done, block.data(), frames, 48000),
                  static_cast<int>(call_samples));
        out.insert(out.end(), block.begin(), block.end());
    }
    return out;
}

}  // namespace test
