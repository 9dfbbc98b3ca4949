// Passes malformed frames to the filter: ones that contradict their description, change the stream or hold
// nothing. The filter reports a clear result and processes the next good frame normally.
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "filter/faults/filter_under_test.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::AVQFFrame;
using Vorlin::IQFFrame;

constexpr int kInvalidArgument = -22;

// Expects that the loop gives up one frame with this result and log line, and processes the next good frame.
void expectGivenUp(std::unique_ptr<IQFFrame> frame, int result, const std::string& log_line) {
    Vorlin::sonivexFilter filter({}, {}, true);  // not initialised: the test runs the worker's loop
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
    filter.setInvalid(false);
    HostLogCapture log;
    ASSERT_EQ(filter.push(frame, 0), 0);
    EXPECT_EQ((filter.*Peer::kFilterLoop)(), result);
    EXPECT_EQ(log.lines(), std::vector<std::string>{log_line});
    std::unique_ptr<IQFFrame> out;
    EXPECT_EQ(filter.pull(out, 0), -35);

    std::unique_ptr<IQFFrame> good = makeFrame({}, noiseSource(1));
    ASSERT_EQ(filter.push(good, 0), 0);
    EXPECT_EQ((filter.*Peer::kFilterLoop)(), 0);
    EXPECT_EQ(filter.pull(out, 0), 0);
}

std::string lie(int channels, int samples) {
    return "16 sonivex: frame does not hold what it describes. channels " + std::to_string(channels) +
           ", samples " + std::to_string(samples);
}

TEST(FilterBadFrames, AreGivenUpWithoutData) {
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
        auto frame = makeFrame({.format = format}, noiseSource(1));
        AVFrame* av = *frame;
        for (AVBufferRef*& buffer : av->buf) av_buffer_unref(&buffer);
        for (uint8_t*& data : av->data) data = nullptr;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
    }
}

TEST(FilterBadFrames, AreGivenUpWithoutSamples) {
    for (const int samples : {0, -1, INT32_MIN}) {
        auto frame = makeFrame({}, noiseSource(1));
        static_cast<AVFrame*>(*frame)->nb_samples = samples;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
    }
}

TEST(FilterBadFrames, AreGivenUpWithMoreSamplesThanTheirBuffersHold) {
    for (const AVSampleFormat format : allSampleFormats()) {
        for (const int samples : {1200, 1 << 20, INT32_MAX}) {
            auto frame = makeFrame({.format = format}, noiseSource(1));
            static_cast<AVFrame*>(*frame)->nb_samples = samples;
            expectGivenUp(std::move(frame), kInvalidArgument, lie(2, 1024));
        }
    }
}

TEST(FilterBadFrames, AreGivenUpWithAMissingPlane) {
    auto frame = makeFrame({.format = AV_SAMPLE_FMT_S16P, .channels = 6}, noiseSource(1));
    static_cast<AVFrame*>(*frame)->extended_data[4] = nullptr;
    expectGivenUp(std::move(frame), kInvalidArgument, lie(6, 1024));
}

TEST(FilterBadFrames, AreGivenUpWithAContradictingDescription) {
    const std::function<void(IQFFrame::audioInfo&)> lies[] = {
        [](auto& info) { info.channels = 6; },          [](auto& info) { info.format = AV_SAMPLE_FMT_FLT; },
        [](auto& info) { info.sample_rate = 44100; },   [](auto& info) { info.format = 1000; },
        [](auto& info) { info.channel_layout = 0x3f; },
    };
    for (const auto& tell : lies) {
        auto frame = makeFrame({}, noiseSource(1));
        tell(frame->getInfo());
        const int channels = frame->getInfo().channels;
        expectGivenUp(std::move(frame), kInvalidArgument, lie(channels, 1024));
    }
}

TEST(FilterBadFrames, ArePassedOnUntouchedWhileTheFilterIsInvalid) {
    FilterUnderTest filter;
    filter.options(R"({"enable_normalizer": true})");
    auto frame = makeFrame({}, noiseSource(1));
    static_cast<AVFrame*>(*frame)->nb_samples = -5;
    const auto* identity = frame.get();
    EXPECT_EQ(filter.pass(std::move(frame)).get(), identity);
}

TEST(FilterBadFrames, ArePassedOnWithInvalidChannelsOrRate) {
    FilterUnderTest filter;
    filter.startNormalizer();
    auto frame = makeFrame({}, noiseSource(1));
    frame->getInfo().channels = 0;
    EXPECT_NE(filter.pass(std::move(frame)), nullptr);
    frame = makeFrame({}, noiseSource(1));
    frame->getInfo().sample_rate = -48000;
    EXPECT_NE(filter.pass(std::move(frame)), nullptr);
}

// A player must flush when the stream changes. Otherwise the filter refuses every frame of the new stream.
TEST(FilterBadFrames, AreRefusedAfterAStreamChangeWithoutAFlush) {
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
        for (const bool is_unspecified : {false, true}) {
            if (is_unspecified && change.channels == 2) continue;
            FilterUnderTest filter;
            filter.startNormalizer();
            ASSERT_NE(filter.pass(makeFrame(first, noiseSource(1))), nullptr);
            HostLogCapture log;
            auto other = makeFrame(change, noiseSource(2));
            if (is_unspecified) {
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
            EXPECT_NE(filter.pass(makeFrame(first, noiseSource(1))), nullptr);
            filter->flush();
            EXPECT_NE(filter.pass(makeFrame(change, noiseSource(1))), nullptr);
        }
    }
}

// A frame may point into memory that is not reference-counted, such as a player's own buffer.
class FilterNonRefcountedFrames : public ::testing::TestWithParam<AVSampleFormat> {
  protected:
    // Makes a frame whose planes lie one after the other in `memory`, with nothing behind them.
    std::unique_ptr<AVQFFrame> pointInto(std::vector<uint8_t>& memory, const AVFrame* original,
                                         int line_size) {
        const bool is_planar = av_sample_fmt_is_planar(GetParam()) != 0;
        const int planes = is_planar ? original->ch_layout.nb_channels : 1;
        const int plane_bytes = av_samples_get_buffer_size(nullptr, original->ch_layout.nb_channels,
                                                           original->nb_samples, GetParam(), 1) /
                                planes;
        memory.clear();
        for (int plane = 0; plane < planes; ++plane) {
            const uint8_t* data = original->extended_data[plane];
            memory.insert(memory.end(), data, data + plane_bytes);
        }
        AVFrame* av = av_frame_alloc();
        av->format = original->format;
        av->sample_rate = original->sample_rate;
        av->nb_samples = original->nb_samples;
        EXPECT_EQ(Vorlin::av::setFrameLayout(av, original->ch_layout), 0);
        for (int plane = 0; plane < planes; ++plane) av->data[plane] = memory.data() + plane * plane_bytes;
        av->linesize[0] = line_size == kExact ? plane_bytes : line_size;
        return std::make_unique<AVQFFrame>(av);
    }

    static constexpr int kExact = INT32_MAX;  // stands for a line size of exactly one plane
};

INSTANTIATE_TEST_SUITE_P(EveryFormat, FilterNonRefcountedFrames, ::testing::ValuesIn(allSampleFormats()),
                         [](const auto& parameter) { return av_get_sample_fmt_name(parameter.param); });

TEST_P(FilterNonRefcountedFrames, AreProcessedIntoNewMemoryWithAndWithoutALineSize) {
    for (const int line_size : {kExact, 0}) {
        SCOPED_TRACE("line size " + std::to_string(line_size));
        FilterUnderTest filter;
        filter.startNormalizer();
        FilterUnderTest other;  // receives the same samples in reference-counted frames
        other.startNormalizer();
        for (uint32_t seed = 0; seed < 3; ++seed) {
            auto counted = makeFrame({.format = GetParam()}, noiseSource(seed, 2000));
            std::vector<uint8_t> memory;
            auto frame = pointInto(memory, *counted, line_size);
            const std::vector<uint8_t> before = memory;
            const auto expected = other.pass(std::move(counted));
            const auto out = filter.pass(std::move(frame));
            ASSERT_NE(out, nullptr);
            EXPECT_TRUE(holdsSamples(avFrameOf(out), samplesOf(avFrameOf(expected))));
            EXPECT_NE(avFrameOf(out)->extended_data[0], memory.data());
            EXPECT_EQ(memory, before);
        }
    }
}

TEST_P(FilterNonRefcountedFrames, AreGivenUpWithATooSmallLineSize) {
    for (const int line_size : {1, 1023, -1, INT32_MIN}) {
        const auto counted = makeFrame({.format = GetParam()}, noiseSource(1));
        std::vector<uint8_t> memory;
        expectGivenUp(pointInto(memory, *counted, line_size), kInvalidArgument, lie(2, 1024));
    }
}

}  // namespace
}  // namespace test
