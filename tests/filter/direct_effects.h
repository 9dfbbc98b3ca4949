#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "sonivex/dialoguenhance.h"
#include "sonivex/surround.h"

namespace test {

/** Calls surround directly; the filter must produce the same samples from the same 16-bit blocks. */
class DirectSurround {
  public:
    DirectSurround(int channels, int type, int mode, int limiter)
        : channels_(channels), handle_(aem_CreateSurround(channels, 48000, type, mode, limiter)) {}
    DirectSurround(const DirectSurround&) = delete;
    DirectSurround& operator=(const DirectSurround&) = delete;
    ~DirectSurround() { aem_ReleaseSurround(handle_); }

    /** @param in Interleaved samples. Mono is copied to both channels, because the effect takes stereo. */
    std::vector<int16_t> process(const std::vector<int16_t>& in) {
        std::vector<int16_t> widened;
        if (channels_ == 1) {
            for (const int16_t sample : in) widened.insert(widened.end(), 2, sample);
        }
        const int frames = static_cast<int>(in.size()) / channels_;
        std::vector<int16_t> out(2 * static_cast<std::size_t>(frames));
        const int16_t* samples = channels_ == 1 ? widened.data() : in.data();
        EXPECT_EQ(aem_ProcessSurround(handle_, samples, out.data(), frames), 2 * frames);
        return out;
    }

  private:
    int channels_;
    void* handle_;
};

/** Calls dialogue enhancement directly, with the gains that the filter uses. */
class DirectDialogue {
  public:
    DirectDialogue(int rate_hz, double voice)
        : rate_hz_(rate_hz), handle_(aem_CreateDialoguEnhance(2, rate_hz, 1.0, 1.0, voice)) {}
    DirectDialogue(const DirectDialogue&) = delete;
    DirectDialogue& operator=(const DirectDialogue&) = delete;
    ~DirectDialogue() { aem_ReleaseDialoguEnhance(handle_); }

    std::vector<int16_t> process(const std::vector<int16_t>& in) {
        std::vector<int16_t> out(in.size());
        const int samples = static_cast<int>(in.size());
        EXPECT_EQ(aem_ProcessDialoguEnhance(handle_, in.data(), out.data(), samples / 2, rate_hz_), samples);
        return out;
    }

  private:
    int rate_hz_;
    void* handle_;
};

}  // namespace test
