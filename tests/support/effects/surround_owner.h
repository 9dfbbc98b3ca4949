#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "sonivex/surround.h"
#include "support/signals.h"
#include "surround_handle.h"

namespace test {

struct ReleaseSurround {
    void operator()(void* handle) const { aem_ReleaseSurround(handle); }
};
using SurroundPointer = std::unique_ptr<void, ReleaseSurround>;

inline SurroundPointer makeSurround(int channels, int type, int mode = 1, int limiter = 1) {
    SurroundPointer handle(aem_CreateSurround(channels, 48000, type, mode, limiter));
    EXPECT_NE(handle, nullptr);
    return handle;
}

inline SurroundHandle& recordOf(const SurroundPointer& handle) {
    return *static_cast<SurroundHandle*>(handle.get());
}

/** Samples per input frame: the effect takes mono as two channels. */
inline std::size_t surroundWidth(int channels) {
    return static_cast<std::size_t>(std::max(channels, 2));
}

/** Processes `in` in calls of these sizes, in frames, and returns the output. Each call's input has memory of
 *  exactly its size, so that a sanitizer reports every read beyond it. */
inline Pcm surrounded(void* handle, const Pcm& in, int channels, const std::vector<int>& call_sizes) {
    const std::size_t width = surroundWidth(channels);
    Pcm out;
    std::size_t frame = 0;
    for (const int size : call_sizes) {
        const auto frames = static_cast<std::size_t>(size);
        const auto first = in.begin() + static_cast<std::ptrdiff_t>(frame * width);
        const Pcm call_in(first, first + static_cast<std::ptrdiff_t>(frames * width));
        Pcm call_out(2 * frames, -1);
        EXPECT_EQ(aem_ProcessSurround(handle, call_in.data(), call_out.data(), size), 2 * size);
        out.insert(out.end(), call_out.begin(), call_out.end());
        frame += frames;
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
    for (std::size_t left = frames; left > 0;) {
        const int size = std::min(random.between(1, longest), static_cast<int>(left));
        sizes.push_back(size);
        left -= static_cast<std::size_t>(size);
    }
    return sizes;
}

}  // namespace test
