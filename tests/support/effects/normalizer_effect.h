#pragma once

#include <cstddef>
#include <string>

#include "sonivex/normalizer.h"
#include "support/effects/effect.h"

namespace test {

/** The normalizer. Its input and output have as many samples in a frame as it has channels. */
class NormalizerEffect final : public Effect {
  public:
    /** Creates a normalizer and keeps the mixer's version line off the test's output. */
    explicit NormalizerEffect(int channels, int rate_hz = 48000)
        : NormalizerEffect(channels, created(channels, rate_hz)) {}

    /** Output of aem_CreateNormalizer on standard output. */
    const std::string& printed() const { return printed_; }

  private:
    struct Created {
        void* handle;
        std::string printed;
    };

    static Created created(int channels, int rate_hz) {
        testing::internal::CaptureStdout();
        void* const handle = aem_CreateNormalizer(channels, rate_hz);
        return {handle, testing::internal::GetCapturedStdout()};
    }

    NormalizerEffect(int channels, const Created& created)
        : Effect(created.handle, aem_ReleaseNormalizer, static_cast<std::size_t>(channels),
                 static_cast<std::size_t>(channels)),
          channels_(channels),
          printed_(created.printed) {}

    int call(const short* in, short* out, int frames) override {
        return aem_ProcessNormalizer(handle(), in, out, frames, channels_);
    }

    int channels_;
    std::string printed_;
};

}  // namespace test
