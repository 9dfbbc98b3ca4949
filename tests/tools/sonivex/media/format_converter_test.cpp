#include "format_converter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

TEST(FormatConverter, PassesFramesOfTheTargetSpecThroughUntouched) {
    FormatConverter converter(test::floatSpec(2));
    FramePtr frame = test::floatFrame(2, 64, [](int, int) { return 0.5F; });
    const uint8_t* samples = frame->data[0];
    frame = converter.convert(std::move(frame));
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->data[0], samples);
    EXPECT_EQ(converter.flush(), nullptr);
}

TEST(FormatConverter, FollowsEveryFormatChangeWithoutLosingSound) {
    FormatConverter converter(test::floatSpec(2, 48000));
    int frames = 0;
    const auto count = [&](const FramePtr& frame) {
        if (frame == nullptr) return;
        EXPECT_TRUE(specOf(*frame) == test::floatSpec(2, 48000));
        frames += frame->nb_samples;
    };
    const auto half = [](int, int) { return 0.5F; };
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(2, 4410, half, 44100)));
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(1, 4800, half, 48000)));
    for (int i = 0; i < 10; ++i) count(converter.convert(test::floatFrame(2, 4800, half, 48000)));
    count(converter.flush());
    // One second of each. A resampler may round its end by a few samples.
    EXPECT_NEAR(frames, 3 * 48000, 40);
}

TEST(AudioSpec, ReplacesAnUnspecifiedLayoutByTheDefaultOfItsChannelCount) {
    FramePtr frame = test::floatFrame(6, 16, [](int, int) { return 0.0F; });
    frame->ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
    const AudioSpec spec = specOf(*frame);
    const AVChannelLayout expected = defaultLayout(6);
    EXPECT_EQ(av_channel_layout_compare(&spec.layout, &expected), 0);
}

TEST(AudioSpec, TrimmingAFrameKeepsTheChosenSamples) {
    const FramePtr frame = test::countingFrame(0, 100);
    trimFrame(*frame, 10, 3);
    EXPECT_EQ(test::floatsOf(*frame), (std::vector<float>{10.0F, 11.0F, 12.0F}));
}

}  // namespace
