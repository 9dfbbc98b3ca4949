#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "sonivex/surround.h"

namespace test {

/** Surround called by hand: what the filter should make of 16-bit blocks. */
class DirectSurround {
  public:
    DirectSurround(int channels, int type, int mode, int limiter)
        : mChannels(channels), mHandle(aem_CreateSurround(channels, 48000, type, mode, limiter)) {}
    DirectSurround(const DirectSurround&) = delete;
    DirectSurround& operator=(const DirectSurround&) = delete;
    ~DirectSurround() { aem_ReleaseSurround(mHandle); }

    /** @param in one channel counts as two equal ones, which the effect has to be given. */
    std::vector<int16_t> process(const std::vector<int16_t>& in) {
        std::vector<int16_t> widened;
        if (mChannels == 1) {
            for (const int16_t sample : in) widened.insert(widened.end(), 2, sample);
        }
        const int frames = static_cast<int>(in.size()) / mChannels;
        std::vector<int16_t> out(2 * static_cast<std::size_t>(frames));
        const int16_t* samples = mChannels == 1 ? widened.data() : in.data();
        EXPECT_EQ(aem_ProcessSurround(mHandle, samples, out.data(), frames), 2 * frames);
        return out;
    }

  private:
    int mChannels;
    void* mHandle;
};

}  // namespace test
