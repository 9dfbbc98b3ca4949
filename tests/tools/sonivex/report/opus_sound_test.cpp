#include "opus_sound.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "failure.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::OpusSound;

std::string encoded(std::size_t frames, int rate_bps) {
    OpusSound sound(rate_bps);
    sound.add(test::noiseFloats(7, 2 * frames, 0.3F));
    return sound.finish();
}

class OpusSounds : public testing::Test {
  protected:
    void SetUp() override {
        if (!sonivex_tool::hasOpusEncoder()) GTEST_SKIP() << "FFmpeg has no encoder of Opus";
    }
};

TEST_F(OpusSounds, AreOggFilesOfOpus) {
    const std::string file = encoded(48000, 64000);
    EXPECT_EQ(file.substr(0, 4), "OggS");
    EXPECT_NE(file.find("OpusHead"), std::string::npos);
}

TEST_F(OpusSounds, HaveAboutTheSizeOfTheirBitRate) {
    constexpr std::size_t kSeconds = 10;
    for (const int rate_bps : {30000, 64000, 128000}) {
        const double expected = rate_bps / 8.0 * kSeconds;
        EXPECT_NEAR(static_cast<double>(encoded(48000 * kSeconds, rate_bps).size()), expected,
                    0.25 * expected)
            << rate_bps;
    }
}

TEST_F(OpusSounds, HaveTheSameBytesEachTime) {
    EXPECT_EQ(encoded(10000, 64000), encoded(10000, 64000));
}

TEST_F(OpusSounds, MayBeOneSampleShortOrEmpty) {
    EXPECT_EQ(encoded(1, 64000).substr(0, 4), "OggS");
    EXPECT_EQ(encoded(0, 64000).substr(0, 4), "OggS");
}

TEST_F(OpusSounds, RefuseARateThatTheEncoderRefuses) {
    EXPECT_THROW(OpusSound(1), sonivex_tool::Failure);
}

}  // namespace
