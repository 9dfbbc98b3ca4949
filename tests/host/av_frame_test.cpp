#include "vorlin/av_frame.h"

#include <gtest/gtest.h>

#include <memory>

#include "vorlin/av_compat.h"
#include "vorlin/sample_format.h"

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/samplefmt.h>
}

namespace Vorlin {
namespace {

AVFrame* makeFrame(AVSampleFormat format, const char* layout_name, int rate_hz, int frames) {
    AVFrame* frame = av_frame_alloc();
    frame->format = format;
    frame->sample_rate = rate_hz;
    frame->nb_samples = frames;
    AVChannelLayout layout{};
    EXPECT_EQ(av_channel_layout_from_string(&layout, layout_name), 0);
    EXPECT_EQ(av::setFrameLayout(frame, layout), 0);
    av_channel_layout_uninit(&layout);
    EXPECT_EQ(av_frame_get_buffer(frame, 0), 0);
    return frame;
}

TEST(AVQFFrame, DescribesItsFrame) {
    AVQFFrame frame(makeFrame(AV_SAMPLE_FMT_FLTP, "5.1(side)", 44100, 77));
    const auto& info = frame.getInfo();
    EXPECT_EQ(info.format, AV_SAMPLE_FMT_FLTP);
    EXPECT_EQ(info.channels, 6);
    EXPECT_EQ(info.sample_rate, 44100);
    EXPECT_EQ(info.nb_samples, 77);
    EXPECT_EQ(info.channel_layout, 0x60fu);  // FL FR FC LFE SL SR
}

TEST(AVQFFrame, HasNoMaskForACustomLayout) {
    AVQFFrame frame(makeFrame(AV_SAMPLE_FMT_S16, "FR+FL", 48000, 4));
    EXPECT_EQ(frame.getInfo().channels, 2);
    EXPECT_EQ(frame.getInfo().channel_layout, 0u);
}

TEST(AVQFFrame, CanBeEmpty) {
    AVQFFrame frame(nullptr);
    EXPECT_EQ(static_cast<AVFrame*>(frame), nullptr);
    EXPECT_EQ(frame.getInfo().format, -1);
    EXPECT_EQ(frame.getInfo().channels, 0);
    EXPECT_EQ(frame.getInfo().nb_samples, 0);
}

TEST(AVQFFrame, KeepsItsFrameUntilItIsDestroyed) {
    AVFrame* inner = makeFrame(AV_SAMPLE_FMT_S16, "stereo", 48000, 4);
    AVBufferRef* samples = av_buffer_ref(inner->buf[0]);
    {
        std::unique_ptr<IQFFrame> frame = std::make_unique<AVQFFrame>(inner);
        EXPECT_EQ(static_cast<AVFrame*>(dynamic_cast<AVQFFrame&>(*frame)), inner);
        EXPECT_EQ(av_buffer_get_ref_count(samples), 2);
    }
    EXPECT_EQ(av_buffer_get_ref_count(samples), 1);
    av_buffer_unref(&samples);
}

TEST(AVQFFrame, AllowsChangesToItsDescription) {
    AVQFFrame frame(makeFrame(AV_SAMPLE_FMT_S16, "stereo", 48000, 4));
    frame.getInfo().nb_samples = 3;
    EXPECT_EQ(frame.getInfo().nb_samples, 3);
}

TEST(SampleFormatName, IsSetForEveryFormatAndNullForOtherValues) {
    EXPECT_STREQ(qf_get_sample_fmt_name(AV_SAMPLE_FMT_S16), "s16");
    EXPECT_STREQ(qf_get_sample_fmt_name(AV_SAMPLE_FMT_FLTP), "fltp");
    for (int format = 0; format < AV_SAMPLE_FMT_NB; ++format) {
        EXPECT_NE(qf_get_sample_fmt_name(format), nullptr) << format;
    }
    for (const int format : {-1, static_cast<int>(AV_SAMPLE_FMT_NB), 1 << 30, -(1 << 30)}) {
        EXPECT_EQ(qf_get_sample_fmt_name(format), nullptr) << format;
    }
}

TEST(AvCompat, KnowsTheMasksOfDefaultLayouts) {
    EXPECT_EQ(av::defaultLayoutMask(1), 0x4u);
    EXPECT_EQ(av::defaultLayoutMask(2), 0x3u);
    EXPECT_EQ(av::defaultLayoutMask(63), 0u);
}

}  // namespace
}  // namespace Vorlin
