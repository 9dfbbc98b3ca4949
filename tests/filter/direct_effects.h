#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "sonivex/dialoguenhance.h"
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

/** Dialogue enhancement called by hand, with the gains that the filter asks for. */
class DirectDialogue {
  public:
    DirectDialogue(int rate_hz, double voice)
        : mRate_hz(rate_hz), mHandle(aem_CreateDialoguEnhance(2, rate_hz, 1.0, 1.0, voice)) {}
    DirectDialogue(const DirectDialogue&) = delete;
    DirectDialogue& operator=(const DirectDialogue&) = delete;
    ~DirectDialogue() { aem_ReleaseDialoguEnhance(mHandle); }

    std::vector<int16_t> process(const std::vector<int16_t>& in) {
        std::vector<int16_t> out(in.size());
        const int samples = static_cast<int>(in.size());
        EXPECT_EQ(aem_ProcessDialoguEnhance(mHandle, in.data(), out.data(), samples / 2, mRate_hz), samples);
        return out;
    }

  private:
    int mRate_hz;
    void* mHandle;
};

}  // namespace test
