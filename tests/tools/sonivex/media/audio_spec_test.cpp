#include "audio_spec.h"

#include <gtest/gtest.h>

namespace {

using namespace sonivex_tool;

// A planar frame; sample i of channel c is 100 * c + i.
FramePtr planarFrame(int channels, int frames) {
    AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_FLTP;
    spec.rate_hz = 48000;
    spec.layout = defaultLayout(channels);
    FramePtr frame = makeFrame(spec, frames);
    for (int c = 0; c < channels; ++c) {
        auto* samples = reinterpret_cast<float*>(frame->extended_data[c]);
        for (int i = 0; i < frames; ++i) samples[i] = static_cast<float>(100 * c + i);
    }
    return frame;
}

TEST(TrimFrame, KeepsThePlanesOfAnyNumberOfChannels) {
    for (const int channels : {1, 2, 8, 9, 24, 300}) {
        const FramePtr frame = planarFrame(channels, 16);
        trimFrame(*frame, 3, 5);
        ASSERT_EQ(frame->nb_samples, 5);
        for (int c = 0; c < channels; ++c) {
            const auto* samples = reinterpret_cast<const float*>(frame->extended_data[c]);
            EXPECT_EQ(samples[0], static_cast<float>(100 * c + 3)) << channels << " channels, " << c;
            EXPECT_EQ(samples[4], static_cast<float>(100 * c + 7));
            if (c < AV_NUM_DATA_POINTERS) {
                EXPECT_EQ(frame->data[c], frame->extended_data[c]);
            }
        }
    }
}

}  // namespace
