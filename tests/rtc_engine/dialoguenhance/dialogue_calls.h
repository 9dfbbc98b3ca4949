#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/effects/dialogue_owner.h"
#include "support/guarded_block.h"
#include "support/signals.h"

namespace test {

/** Block length at a sample rate, in frames. */
inline int hopFrames(int rate_hz) {
    return rate_hz <= 50000 ? 512 : rate_hz <= 100000 ? 1024 : 2048;
}

/** Processes `in` with a new handle in calls of these sizes, in frames, and returns the output. Input beyond
 *  their sum is not processed. Each call's input has memory of exactly its size, so that a sanitizer reports
 *  every read beyond it, and each output has guards. */
inline Pcm enhanced(const DialogueSettings& settings, const Pcm& in, const std::vector<int>& call_sizes) {
    const DialoguePointer handle = makeDialogue(settings);
    Pcm out;
    out.reserve(in.size());
    auto next = in.begin();
    for (const int frames : call_sizes) {
        const Pcm call_in(next, next + 2 * frames);
        GuardedBlock block(call_in.size());
        EXPECT_EQ(
            aem_ProcessDialoguEnhance(handle.get(), call_in.data(), block.data(), frames, settings.rate_hz),
            2 * frames);
        EXPECT_TRUE(block.guardsAreWhole());
        out.insert(out.end(), block.data(), block.data() + 2 * frames);
        next += 2 * frames;
    }
    return out;
}

/** @return as many calls of `size` frames as fit into `frames` */
inline std::vector<int> callsOf(int size, std::size_t frames) {
    return std::vector<int>(frames / static_cast<std::size_t>(size), size);
}

/** @return calls of 1 to `longest` frames whose sum is `frames` */
inline std::vector<int> randomCalls(std::uint64_t seed, std::size_t frames, int longest) {
    Random random(seed);
    std::vector<int> sizes;
    for (auto left = static_cast<int>(frames); left > 0; left -= sizes.back()) {
        sizes.push_back(std::min(random.between(1, longest), left));
    }
    return sizes;
}

}  // namespace test
