#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "sonivex/normalizer.h"

namespace test {

/** Calls the normalizer directly; the filter must produce the same samples from the same 16-bit blocks. */
class DirectNormalizer {
  public:
    explicit DirectNormalizer(int channels, int rate_hz = 48000)
        : channels_(channels), handle_(aem_CreateNormalizer(channels, rate_hz)) {}
    DirectNormalizer(const DirectNormalizer&) = delete;
    DirectNormalizer& operator=(const DirectNormalizer&) = delete;
    ~DirectNormalizer() { aem_ReleaseNormalizer(handle_); }

    std::vector<int16_t> process(const std::vector<int16_t>& in) {
        std::vector<int16_t> out(in.size());
        const int frames = static_cast<int>(in.size()) / channels_;
        EXPECT_EQ(aem_ProcessNormalizer(handle_, in.data(), out.data(), frames, channels_),
                  frames * channels_);
        return out;
    }

  private:
    int channels_;
    void* handle_;
};

}  // namespace test
