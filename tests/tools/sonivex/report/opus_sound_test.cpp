#include "opus_sound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "failure.h"
#include "support/memory/heap_bytes.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::OpusSound;

std::string encoded(std::size_t frames, int rate_bps) {
    OpusSound sound(rate_bps);
    sound.add(test::noiseFloats(7, 2 * frames, 0.3F));
    return sound.finish();
}

// Steady chords in stereo whose notes have many harmonics.
std::vector<float> chords(std::size_t frames) {
    constexpr int kHarmonics = 12;
    std::vector<float> samples(2 * frames);
    for (const double note_hz : {220.0, 277.18, 329.63, 440.0}) {
        for (int harmonic = 1; harmonic <= kHarmonics; ++harmonic) {
            const double step = 2.0 * std::numbers::pi * note_hz * harmonic / 48000.0;
            for (std::size_t n = 0; n < frames; ++n) {
                const double value = 0.1 / harmonic * std::sin(step * static_cast<double>(n));
                samples[2 * n] += static_cast<float>(value);
                samples[2 * n + 1] += static_cast<float>(0.7 * value);
            }
        }
    }
    return samples;
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

// An encoder that is free in its bit rate spends more than asked on tones.
TEST_F(OpusSounds, OfTonesStayWithinTheirBitRate) {
    constexpr std::size_t kSeconds = 10;
    for (const int rate_bps : {30000, 64000, 128000}) {
        OpusSound sound(rate_bps);
        sound.add(chords(48000 * kSeconds));
        // Pages of Ogg and the headers of packets add 1.4 kbit/s.
        EXPECT_LT(static_cast<double>(sound.finish().size()), 1.06 * rate_bps / 8.0 * kSeconds) << rate_bps;
    }
}

TEST_F(OpusSounds, HaveTheSameBytesEachTime) {
    EXPECT_EQ(encoded(10000, 64000), encoded(10000, 64000));
}

TEST_F(OpusSounds, MayBeOneSampleShortOrEmpty) {
    EXPECT_EQ(encoded(1, 64000).substr(0, 4), "OggS");
    EXPECT_EQ(encoded(0, 64000).substr(0, 4), "OggS");
}

// The muxer's memory holds what is encoded so far.
TEST_F(OpusSounds, ThatNobodyFinishesGiveTheirMemoryBack) {
    const auto abandonOne = [] {
        OpusSound sound(128000);
        sound.add(test::noiseFloats(7, std::size_t{2} * 48000 * 10, 0.3F));
    };
    abandonOne();  // the libraries keep some memory for good
    const std::size_t before = test::heapBytes();
    for (int sound = 0; sound < 4; ++sound) abandonOne();
    EXPECT_LT(test::heapBytes(), before + 50'000);
}

TEST_F(OpusSounds, RefuseARateThatTheEncoderRefuses) {
    EXPECT_THROW(OpusSound(1), sonivex_tool::Failure);
}

}  // namespace
