// Checks which frames the filter processes, which it passes on, and how a flush disposes of frames.
#include <gtest/gtest.h>

#include "filter/faults/filter_under_test.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::AVQFFrame;
using Vorlin::IQFFrame;

// Properties of a frame that must not change when the filter passes it on.
struct Fingerprint {
    explicit Fingerprint(const std::unique_ptr<IQFFrame>& frame) {
        const AVFrame* av_frame = avFrameOf(frame);
        identity = frame.get();
        av = av_frame;
        data = av_frame->extended_data[0];
        format = av_frame->format;
        samples = samplesOf(av_frame);
        const IQFFrame::audioInfo& info = frame->getInfo();
        description = {info.format, info.channels, info.sample_rate, info.nb_samples,
                       static_cast<int64_t>(info.channel_layout)};
    }
    bool operator==(const Fingerprint&) const = default;

    const IQFFrame* identity;
    const AVFrame* av;
    const uint8_t* data;
    int format;
    std::vector<int16_t> samples;
    std::vector<int64_t> description;
};

void expectPassedOn(FilterUnderTest& filter, std::unique_ptr<IQFFrame> frame, const std::string& what) {
    SCOPED_TRACE(what);
    const Fingerprint before(frame);
    const auto out = filter.pass(std::move(frame));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(Fingerprint(out), before);
}

// Makes quiet noise. The normalizer starts a stream with a high gain, so it changes every such block.
std::unique_ptr<IQFFrame> quietNoise(const FrameSpec& spec) {
    return makeFrame(spec, noiseSource(3, 1000));
}

TEST(FilterWorkerLoop, PassesOnFramesWhileNoEffectIsEnabled) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        FilterUnderTest filter(mode);
        filter->setInvalid(false);
        expectPassedOn(filter, quietNoise({}), "no effect");
    }
}

TEST(FilterWorkerLoop, PassesOnFramesWhileInvalid) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        FilterUnderTest filter(mode);
        filter.options(R"({"enable_normalizer": true})");
        expectPassedOn(filter, quietNoise({}), "as created");
        filter->setInvalid(false);
        filter->setInvalid(true);
        expectPassedOn(filter, quietNoise({}), "set invalid again");
    }
}

TEST(FilterWorkerLoop, PassesOnUnsupportedChannelCountsWithoutALogLine) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        FilterUnderTest filter(mode);
        filter.startNormalizer();
        HostLogCapture log;
        const std::pair<int, const char*> layouts[] = {
            {3, ""}, {4, ""}, {5, ""}, {7, ""}, {9, "FL+FR+FC+LFE+BL+BR+FLC+FRC+BC"}};
        for (const auto& [channels, layout] : layouts) {
            expectPassedOn(filter,
                           quietNoise({.format = AV_SAMPLE_FMT_FLTP, .channels = channels, .layout = layout}),
                           std::to_string(channels) + " channels");
        }
        EXPECT_TRUE(log.lines().empty());
    }
}

TEST(FilterWorkerLoop, PassesOnUnsupportedRates) {
    for (const int rate_hz : {8000, 22050, 32000, 96000, 192000}) {
        FilterUnderTest filter;
        filter.startNormalizer();
        expectPassedOn(filter, quietNoise({.rate_hz = rate_hz}), std::to_string(rate_hz));
    }
}

TEST(FilterWorkerLoop, NormalizesEverySupportedRateAndChannelCount) {
    for (const int rate_hz : {16000, 44100, 48000}) {
        for (const int channels : {1, 2, 6, 8}) {
            SCOPED_TRACE(std::to_string(rate_hz) + " Hz, channels " + std::to_string(channels));
            FilterUnderTest filter;
            filter.startNormalizer();
            NormalizerEffect engine(channels);
            for (int call = 0; call < 3; ++call) {
                auto frame = quietNoise({.channels = channels, .rate_hz = rate_hz});
                const auto expected = engine.process(samplesOf(avFrameOf(frame)));
                const auto out = filter.pass(std::move(frame));
                ASSERT_NE(out, nullptr);
                EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
            }
        }
    }
}

TEST(FilterWorkerLoop, PassesOnUnsupportedStreamsWhileDialogueIsEnabled) {
    FilterUnderTest filter;
    filter.options(R"({"enable_dialoguenhance": true})");
    filter->setInvalid(false);
    for (const int channels : {1, 3, 6, 8})
        expectPassedOn(filter, quietNoise({.channels = channels}), std::to_string(channels) + " channels");
    for (const int rate_hz : {16000, 32000, 96000})
        expectPassedOn(filter, quietNoise({.rate_hz = rate_hz}), std::to_string(rate_hz) + " Hz");
    EXPECT_EQ(filter.field(Peer::kFilterGraph), nullptr)
        << "the filter must pass frames on before any conversion";
}

TEST(FilterWorkerLoop, ProcessesAllQueuedFramesButStopsAfterOneThatItPassesOn) {
    // Not initialised: the test runs the worker's loop.
    Vorlin::sonivexFilter filter({}, {}, true);
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
    filter.setInvalid(false);
    const auto queue_two = [&filter](int channels) {
        for (int i = 0; i < 2; ++i) {
            std::unique_ptr<IQFFrame> frame = quietNoise({.channels = channels});
            EXPECT_EQ(filter.push(frame, 0), 0);
        }
    };
    queue_two(2);
    EXPECT_EQ((filter.*Peer::kFilterLoop)(), 0);
    EXPECT_EQ((filter.*Peer::kOutQueue).sizeForConsumer(), 2u);
    filter.flush();
    queue_two(3);
    EXPECT_EQ((filter.*Peer::kFilterLoop)(), 0);
    EXPECT_EQ((filter.*Peer::kOutQueue).sizeForConsumer(), 1u);
}

TEST(FilterWorkerLoop, LogsAndPassesOnANullFrame) {
    HostLogCapture log;
    FilterUnderTest filter;
    filter.startNormalizer();
    std::unique_ptr<IQFFrame> frame;
    EXPECT_EQ(filter->push(frame, 0), 0);
    auto out = quietNoise({});
    EXPECT_EQ(filter->pull(out, 0), 0);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(log.count("16 mAbuffer_ctx is nullptr or avframe is nullptr"), 1);
}

TEST(FilterWorkerLoop, LogsAndPassesOnAFrameWithoutAnAvFrame) {
    struct OtherFrame : IQFFrame {};
    for (const bool is_other_class : {false, true}) {
        HostLogCapture log;
        FilterUnderTest filter;
        filter.startNormalizer();
        std::unique_ptr<IQFFrame> frame;
        if (is_other_class) {
            frame = std::make_unique<OtherFrame>();
        } else {
            frame = std::make_unique<AVQFFrame>(nullptr);
        }
        frame->getInfo() = {AV_SAMPLE_FMT_S16, 2, 48000, 100, 0};
        const auto* identity = frame.get();
        const auto out = filter.pass(std::move(frame));
        EXPECT_EQ(out.get(), identity);
        EXPECT_EQ(log.count("16 mAbuffer_ctx is nullptr or avframe is nullptr"), 1);
    }
}

// --- Flush and destruction.

struct CountedFrame : IQFFrame {
    explicit CountedFrame(int& count) : alive(count) { ++alive; }
    ~CountedFrame() override { --alive; }
    int& alive;
};

TEST(FilterFlush, DestroysEveryFrameInBothQueues) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        int alive = 0;
        FilterUnderTest filter(mode);
        std::vector<std::unique_ptr<IQFFrame>> out;
        for (int i = 0; i < 4; ++i) {
            std::unique_ptr<IQFFrame> frame = std::make_unique<CountedFrame>(alive);
            filter->push(frame, 0);
        }
        EXPECT_GT(alive, 0);
        filter->flush();
        EXPECT_EQ(alive, 0);
        std::unique_ptr<IQFFrame> none;
        EXPECT_EQ(filter->pull(none, 0), -35);
    }
}

TEST(FilterFlush, LetsAnActiveFilterContinue) {
    FilterUnderTest filter(Mode::kActive);
    for (int i = 0; i < 5; ++i) {
        filter->flush();
        expectPassedOn(filter, quietNoise({}), "after a flush");
    }
}

TEST(FilterFlush, ReleasesHandlesGraphsAndFormat) {
    FilterUnderTest filter;
    filter.startNormalizer();
    ASSERT_NE(filter.pass(quietNoise({.format = AV_SAMPLE_FMT_FLTP})), nullptr);
    EXPECT_NE(filter.field(Peer::kNormalizerHandle), nullptr);
    EXPECT_NE(filter.field(Peer::kFilterGraph), nullptr);
    EXPECT_NE(filter.field(Peer::kOutFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::kSrcFormat), AV_SAMPLE_FMT_FLTP);
    EXPECT_EQ(filter.field(Peer::kOutChannels), 2);
    filter->flush();
    EXPECT_EQ(filter.field(Peer::kNormalizerHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::kOutFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::kSrcFormat), -1);
    EXPECT_EQ(filter.field(Peer::kOutChannels), -1);
}

TEST(FilterFlush, LogsNothingWithoutHandles) {
    HostLogCapture log;
    ::testing::internal::CaptureStdout();
    {
        FilterUnderTest filter;
        filter->flush();
    }
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "the release of a null handle would be logged";
    EXPECT_EQ(log.lines(), std::vector<std::string>{"32 sonivex init"});
}

TEST(FilterFlush, RestartsTheEffect) {
    FilterUnderTest filter;
    filter.startNormalizer();
    const auto loud = [] { return makeFrame({}, noiseSource(5, 32767)); };
    const auto fresh =
        NormalizerEffect(2).process(samplesOf(avFrameOf(std::unique_ptr<IQFFrame>(quietNoise({})))));
    ASSERT_NE(filter.pass(loud()), nullptr);
    EXPECT_NE(samplesOf(avFrameOf(filter.pass(quietNoise({})))), fresh)
        << "the loud frame must have reduced the gain";
    filter->flush();
    EXPECT_TRUE(holdsSamples(avFrameOf(filter.pass(quietNoise({}))), fresh));
}

TEST(FilterDestruction, DestroysQueuedFrames) {
    for (const bool active : {false, true}) {
        int alive = 0;
        {
            Vorlin::sonivexFilter filter({}, {}, active);
            filter.init(0);
            for (int i = 0; i < 5; ++i) {
                std::unique_ptr<IQFFrame> frame = std::make_unique<CountedFrame>(alive);
                filter.push(frame, 0);
            }
        }
        EXPECT_EQ(alive, 0);
    }
}

}  // namespace
}  // namespace test
