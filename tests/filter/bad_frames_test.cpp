// Frames that lie, change or hold nothing: a clear answer, and the next good frame is processed as if nothing
// was.
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "filter_under_test.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::AVQFFrame;
using Vorlin::IQFFrame;

constexpr int kInvalidArgument = -22;

// The result of the loop for one frame, which is not passed on.
void expectGivenUp(std::unique_ptr<IQFFrame> frame, int result, const std::string& logLine) {
    Vorlin::sonivexFilter filter({}, {}, true);  // not initialised: the test is the worker
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
    filter.setInvalid(false);
    LogCapture log;
    ASSERT_EQ(filter.push(frame, 0), 0);
    EXPECT_EQ((filter.*Peer::filterLoop)(), result);
    EXPECT_EQ(log.lines(), std::vector<std::string>{logLine});
    std::unique_ptr<IQFFrame> out;
    EXPECT_EQ(filter.pull(out, 0), -35);

    std::unique_ptr<IQFFrame> good = makeFrame({}, noise(1));
    ASSERT_EQ(filter.push(good, 0), 0);
    EXPECT_EQ((filter.*Peer::filterLoop)(), 0);
    EXPECT_EQ(filter.pull(out, 0), 0);
}

std::string lie(int channels, int samples) {
    return "16 sonivex: frame does not hold what it describes. channels " + std::to_string(channels) +
           ", samples " + std::to_string(samples);
}

TEST(BadFrames, WithoutDataAreGivenUp) {
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
        auto frame = makeFrame({.format = format}, noise(1));
        AVFrame* av = *frame;
        for (AVBufferRef*& buffer : av->buf) av_buffer_unref(&buffer);
        for (uint8_t*& data : av->data) data = nullptr;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
    }
}

TEST(BadFrames, WithoutAnySampleAreGivenUp) {
    for (const int samples : {0, -1, INT32_MIN}) {
        auto frame = makeFrame({}, noise(1));
        static_cast<AVFrame*>(*frame)->nb_samples = samples;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
    }
}

TEST(BadFrames, OfMoreSamplesThanTheirBuffersHoldAreGivenUp) {
    for (const AVSampleFormat format : allSampleFormats()) {
        for (const int samples : {1200, 1 << 20, INT32_MAX}) {
            auto frame = makeFrame({.format = format}, noise(1));
            static_cast<AVFrame*>(*frame)->nb_samples = samples;
            expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
        }
    }
}

TEST(BadFrames, WithAMissingPlaneAreGivenUp) {
    auto frame = makeFrame({.format = AV_SAMPLE_FMT_S16P, .channels = 6}, noise(1));
    static_cast<AVFrame*>(*frame)->extended_data[4] = nullptr;
    expectGivenUp(std::move(frame), kInvalidArgument, lie(6, 1024));
}

TEST(BadFrames, WhoseDescriptionContradictsThemAreGivenUp) {
    const std::function<void(IQFFrame::audioInfo&)> lies[] = {
        [](auto& info) { info.channels = 6; },          [](auto& info) { info.format = AV_SAMPLE_FMT_FLT; },
        [](auto& info) { info.sample_rate = 44100; },   [](auto& info) { info.format = 1000; },
        [](auto& info) { info.channel_layout = 0x3f; },
    };
    for (const auto& tell : lies) {
        auto frame = makeFrame({}, noise(1));
        tell(frame->getInfo());
        const int channels = frame->getInfo().channels;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(channels, 1024));
    }
}

TEST(BadFrames, ArePassedOnUntouchedWhileTheFilterIsInvalid) {
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true})");
    auto frame = makeFrame({}, noise(1));
    static_cast<AVFrame*>(*frame)->nb_samples = -5;
    const auto* identity = frame.get();
    EXPECT_EQ(filter.pass(std::move(frame)).get(), identity);
}

TEST(BadFrames, OfZeroChannelsOrRateArePassedOn) {
    FilterUnderTest filter;
    filter.startNormalizer();
    auto frame = makeFrame({}, noise(1));
    frame->getInfo().channels = 0;
    EXPECT_NE(filter.pass(std::move(frame)), nullptr);
    frame = makeFrame({}, noise(1));
    frame->getInfo().sample_rate = -48000;
    EXPECT_NE(filter.pass(std::move(frame)), nullptr);
}

// A player flushes on a change of stream; if it does not, the frames of the new stream are refused one by
// one.
TEST(BadFrames, OfAnotherStreamWithoutAFlushAreRefusedAndTheOldStreamGoesOn) {
    const FrameSpec first{.format = AV_SAMPLE_FMT_FLTP};
    const FrameSpec changes[] = {
        {.format = AV_SAMPLE_FMT_S16},
        {.format = AV_SAMPLE_FMT_FLTP, .rate_hz = 44100},
        {.format = AV_SAMPLE_FMT_FLTP, .channels = 6},
        {.format = AV_SAMPLE_FMT_FLTP, .channels = 1},
        {.format = AV_SAMPLE_FMT_FLTP, .channels = 2, .layout = "downmix"},
    };
    for (const FrameSpec& change : changes) {
        SCOPED_TRACE(std::string(av_get_sample_fmt_name(change.format)) + " " +
                     std::to_string(change.rate_hz) + " " + std::to_string(change.channels) + change.layout);
        for (const bool isUnspecified : {false, true}) {
            if (isUnspecified && change.channels == 2) continue;
            FilterUnderTest filter;
            filter.startNormalizer();
            ASSERT_NE(filter.pass(makeFrame(first, noise(1))), nullptr);
            LogCapture log;
            auto other = makeFrame(change, noise(2));
            if (isUnspecified) {
                AVFrame* av = *other;
                const AVChannelLayout unspecified{.order = AV_CHANNEL_ORDER_UNSPEC,
                                                  .nb_channels = change.channels,
                                                  .u = {.mask = 0},
                                                  .opaque = nullptr};
                ASSERT_EQ(Vorlin::av::setFrameLayout(av, unspecified), 0);
                other->getInfo() = AVQFFrame::describe(av);
            }
            EXPECT_EQ(filter.pass(std::move(other)), nullptr);
            EXPECT_EQ(log.lines(), std::vector<std::string>{"16 av_buffersrc_add_frame error -22"});
            EXPECT_NE(filter.pass(makeFrame(first, noise(1))), nullptr);
            filter->flush();
            EXPECT_NE(filter.pass(makeFrame(change, noise(1))), nullptr);
        }
    }
}

// A frame may point into memory that is not reference-counted: a player's own buffer.
TEST(BadFrames, ThatAreNotReferenceCountedAreProcessedWithoutTouchingTheirMemory) {
    std::vector<int16_t> memory(1024 * 2);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = noise(8, 2000)(static_cast<int>(i), 0);
    const std::vector<int16_t> before = memory;
    FilterUnderTest filter;
    filter.startNormalizer();
    for (int i = 0; i < 3; ++i) {
        AVFrame* av = av_frame_alloc();
        av->format = AV_SAMPLE_FMT_S16;
        av->sample_rate = 48000;
        av->nb_samples = 1024;
        ASSERT_EQ(Vorlin::av::setFrameDefaultLayout(av, 2), 0);
        av->data[0] = reinterpret_cast<uint8_t*>(memory.data());
        av->linesize[0] = static_cast<int>(memory.size() * sizeof(int16_t));
        const auto out = filter.pass(std::make_unique<AVQFFrame>(av));
        ASSERT_NE(out, nullptr);
        EXPECT_NE(avFrameOf(out)->data[0], reinterpret_cast<const uint8_t*>(memory.data()));
        EXPECT_NE(samplesOf(avFrameOf(out)), before);
        EXPECT_EQ(memory, before);
    }
}

}  // namespace
}  // namespace test
