// Makes conversion graphs fail once. At most one frame is lost or delivered as 16-bit, and the stream
// continues without a flush.
#include <gtest/gtest.h>

#include <cerrno>

#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "filter/faults/graph_faults.h"
#include "frame_checks.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

const std::vector<AVSampleFormat> kNotSixteenBit = {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_S32};

void expectFrame(const std::unique_ptr<IQFFrame>& out, AVSampleFormat format,
                 const std::vector<int16_t>& expected) {
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->format, format);
    EXPECT_EQ(out->getInfo().format, format);
    ASSERT_TRUE(frameMatchesDescription(out->getInfo(), avFrameOf(out)))
        << "every plane must lie inside a buffer";
    EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
}

TEST(FilterOutputGraphFaults, DeliverSixteenBitOnceIfAGraphIgnoresThePlayersFormat) {
    for (const AVSampleFormat format : kNotSixteenBit) {
        SCOPED_TRACE(av_get_sample_fmt_name(format));
        HostLogCapture log;
        FilterUnderTest filter;
        filter.startNormalizer();
        NormalizerEffect engine(2);
        WithGraphFaults faults;
        faults->output_formats_to_lose = 1;
        for (const AVSampleFormat delivered : {AV_SAMPLE_FMT_S16, format, format}) {
            auto frame = makeFrame({.format = format}, noiseSource(4, 3000));
            const auto expected = engine.process(samplesOf(*frame));
            expectFrame(filter.pass(std::move(frame)), delivered, expected);
        }
        EXPECT_EQ(log.count("24 sonivex: output format conversion failed (ret=-22), fallback to S16"), 1);
    }
}

TEST(FilterInputGraphFaults, CostOneFrameIfAGraphIgnoresSixteenBit) {
    for (const AVSampleFormat format : kNotSixteenBit) {
        SCOPED_TRACE(av_get_sample_fmt_name(format));
        HostLogCapture log;
        FilterUnderTest filter;
        filter.startNormalizer();
        NormalizerEffect engine(2);
        WithGraphFaults faults;
        faults->input_formats_to_lose = 1;
        EXPECT_EQ(filter.pass(makeFrame({.format = format}, noiseSource(3, 3000))), nullptr);
        for (uint32_t seed = 4; seed < 7; ++seed) {
            auto frame = makeFrame({.format = format}, noiseSource(seed, 3000));
            const auto expected = engine.process(samplesOf(*frame));
            expectFrame(filter.pass(std::move(frame)), format, expected);
        }
        EXPECT_EQ(log.count("16 av_buffersink_get_frame error -22"), 1);
    }
}

// 16-bit frames need no other sample format, but the effects require the default layout.
TEST(FilterInputGraphFaults, CostOneFrameIfAGraphIgnoresTheDefaultLayout) {
    const FrameSpec wide{.channels = 8, .layout = "7.1(wide)"};
    FilterUnderTest filter;
    filter.startNormalizer();
    WithGraphFaults faults;
    faults->input_formats_to_lose = 1;
    EXPECT_EQ(filter.pass(makeFrame(wide, noiseSource(1))), nullptr);
    const auto out = filter.pass(makeFrame(wide, noiseSource(1)));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(Vorlin::av::layoutMask(avFrameOf(out)->ch_layout), Vorlin::av::defaultLayoutMask(8));
}

TEST(FilterInputGraphFaults, NeverLeakSamplesOfALostFrameIntoALaterOne) {
    const struct {
        int error;
        const char* log_line;
    } reads[] = {
        {AVERROR(EAGAIN), "48 sonivex av_buffersink_get_frame error -11"},
        {AVERROR_EOF, "48 sonivex av_buffersink_get_frame error -541478725"},
        {AVERROR(ENOMEM), "16 av_buffersink_get_frame error -12"},
    };
    for (const auto& read : reads) {
        for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
            SCOPED_TRACE(std::string(read.log_line) + ", " + av_get_sample_fmt_name(format));
            HostLogCapture log;
            FilterUnderTest filter;
            filter.startNormalizer();
            NormalizerEffect engine(2);
            WithGraphFaults faults;
            faults->error = read.error;
            for (const int frames : {600, 100, 300, 1024}) {
                const bool is_lost = frames == 600;
                faults->input_reads_to_fail = is_lost ? 1 : 0;
                auto frame = makeFrame({.format = format, .frames = frames},
                                       noiseSource(static_cast<uint32_t>(frames), 3000));
                const auto samples = samplesOf(*frame);
                const auto out = filter.pass(std::move(frame));
                if (is_lost) {
                    EXPECT_EQ(out, nullptr);
                } else {
                    expectFrame(out, format, engine.process(samples));
                }
            }
            EXPECT_EQ(log.count(read.log_line), 1);
        }
    }
}

// The frame after a lost one describes the stream afresh, so the stream may change without a flush.
class FilterAfterLostFrame : public ::testing::Test {
  protected:
    FilterAfterLostFrame() { resetEngineFaults(); }

    void start(const std::string& options) {
        filter_.options("{" + options + "}");
        filter_->setInvalid(false);
    }
    void lose(const FrameSpec& spec) {
        WithGraphFaults faults;
        faults->input_reads_to_fail = 1;
        faults->error = AVERROR(EAGAIN);
        EXPECT_EQ(filter_.pass(makeFrame(spec, noiseSource(2))), nullptr);
    }
    std::unique_ptr<IQFFrame> pass(const FrameSpec& spec) {
        return filter_.pass(makeFrame(spec, noiseSource(2)));
    }
    // Expects that several frames of a stream hold the samples of `engine`, in the stream's own format.
    template <typename Engine>
    void expectSoundsLike(Engine& engine, const FrameSpec& spec) {
        SCOPED_TRACE(std::to_string(spec.rate_hz) + " Hz, " + av_get_sample_fmt_name(spec.format));
        for (uint32_t seed = 3; seed < 7; ++seed) {
            auto frame = makeFrame(spec, noiseSource(seed, 3000));
            const auto expected = engine.process(samplesOf(*frame));
            expectFrame(filter_.pass(std::move(frame)), spec.format, expected);
        }
    }

    const FrameSpec mono_{.channels = 1, .frames = 960};
    const FrameSpec stereo_{.channels = 2, .frames = 960};
    const FrameSpec six_channels_{.format = AV_SAMPLE_FMT_FLTP, .channels = 6, .frames = 960};
    const FrameSpec at48000_{.rate_hz = 48000};
    const FrameSpec at44100_{.rate_hz = 44100};
    FilterUnderTest filter_;
};

TEST_F(FilterAfterLostFrame, RecreatesTheNormalizerForAnotherChannelCount) {
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(stereo_), nullptr);
    lose(stereo_);
    const auto out = pass(six_channels_);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->getInfo().channels, 6);
    EXPECT_EQ(engineFaults().creates, 2);
    EXPECT_EQ(engineFaults().releases, 1);
    EXPECT_EQ(engineFaults().channels_of_calls, (std::vector<int>{2, 6}));
}

TEST_F(FilterAfterLostFrame, RecreatesSurroundForAnotherChannelCount) {
    start(R"("enable_surround": true)");
    ASSERT_NE(pass(six_channels_), nullptr);
    lose(six_channels_);
    for (const FrameSpec& other : {stereo_, mono_, six_channels_}) {
        ASSERT_NE(pass(other), nullptr);
        lose(other);
    }
    EXPECT_EQ(engineFaults().surround_creates, 4);
    EXPECT_EQ(engineFaults().surround_releases, 3);
}

TEST_F(FilterAfterLostFrame, RecreatesAnEffectThatWasOffWhenTheChannelCountChanged) {
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(stereo_), nullptr);
    start(R"("enable_surround": true)");
    lose(stereo_);
    ASSERT_NE(pass(six_channels_), nullptr);
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(six_channels_), nullptr);
    EXPECT_EQ(engineFaults().creates, 2);
    EXPECT_EQ(engineFaults().releases, 1);
    EXPECT_EQ(engineFaults().channels_of_calls, (std::vector<int>{2, 6}));
}

TEST_F(FilterAfterLostFrame, KeepsTheEffectForTheSameChannelCount) {
    start(R"("enable_dialoguenhance": true)");
    ASSERT_NE(pass(stereo_), nullptr);
    lose(stereo_);
    ASSERT_NE(pass(stereo_), nullptr);
    EXPECT_EQ(engineFaults().dialogue_creates.size(), 1u);
    EXPECT_EQ(engineFaults().dialogue_releases, 0);
}

TEST_F(FilterAfterLostFrame, ReleasesNoEffectThatWasNotCreated) {
    start(R"("enable_normalizer": true)");
    lose(stereo_);
    ASSERT_NE(pass(six_channels_), nullptr);
    EXPECT_EQ(engineFaults().releases + engineFaults().surround_releases + engineFaults().dialogue_releases,
              0);
}

TEST_F(FilterAfterLostFrame, RecreatesDialogueEnhancementForAnotherSampleRate) {
    start(R"("enable_dialoguenhance": true)");
    ASSERT_NE(pass(at48000_), nullptr);
    lose(at48000_);
    DialogueEffect fresh({.rate_hz = 44100});
    resetEngineFaults();
    expectSoundsLike(fresh, at44100_);
    EXPECT_EQ(engineFaults().dialogue_creates, (std::vector<DialogueSettings>{{2, 44100, 1.0, 1.0, 1.0}}));
    EXPECT_EQ(engineFaults().dialogue_releases, 1);
}

TEST_F(FilterAfterLostFrame, RecreatesTheNormalizerForAnotherSampleRate) {
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(at48000_), nullptr);
    FrameSpec before = at48000_;
    for (const FrameSpec& other : {FrameSpec{.rate_hz = 16000}, at44100_, at48000_}) {
        lose(before);
        before = other;
        NormalizerEffect fresh(2, other.rate_hz);
        resetEngineFaults();
        expectSoundsLike(fresh, other);
        EXPECT_EQ(engineFaults().creates, 1);
        EXPECT_EQ(engineFaults().releases, 1);
    }
}

TEST_F(FilterAfterLostFrame, LeaksNoAudioIntoAStreamOfAnotherSampleRate) {
    start(R"("enable_surround": true)");
    ASSERT_NE(pass(at48000_), nullptr);
    lose(at48000_);
    SurroundEffect fresh(2, 1);
    resetEngineFaults();
    expectSoundsLike(fresh, at44100_);
    EXPECT_EQ(engineFaults().surround_creates, 1);
    EXPECT_EQ(engineFaults().surround_releases, 1);
}

TEST_F(FilterAfterLostFrame, RecreatesAnEffectThatWasOffWhenTheSampleRateChanged) {
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(at48000_), nullptr);
    start(R"("enable_dialoguenhance": true)");
    lose(at48000_);
    ASSERT_NE(pass(at44100_), nullptr);
    start(R"("enable_normalizer": true)");
    ASSERT_NE(pass(at44100_), nullptr);
    EXPECT_EQ(engineFaults().creates, 2);
    EXPECT_EQ(engineFaults().releases, 1);
    EXPECT_EQ(engineFaults().dialogue_releases, 0) << "dialogue enhancement was never created at 48000 Hz";
}

TEST_F(FilterAfterLostFrame, DeliversTheNextStreamInItsOwnSampleFormat) {
    start(R"("enable_normalizer": true)");
    NormalizerEffect engine(2);
    AVSampleFormat before = AV_SAMPLE_FMT_S16;
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S16,
                                        AV_SAMPLE_FMT_S32, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S16}) {
        SCOPED_TRACE(std::string("after ") + av_get_sample_fmt_name(before));
        lose({.format = before});
        expectSoundsLike(engine, {.format = format});
        EXPECT_EQ(filter_.field(Peer::kOutFilterGraph) == nullptr, format == AV_SAMPLE_FMT_S16)
            << "only 16-bit audio needs no output graph";
        before = format;
    }
}

TEST_F(FilterAfterLostFrame, DeliversTheNextStreamInItsOwnFormatAfterPassedOnFrames) {
    start(R"("enable_normalizer": true)");
    const FrameSpec is_float{.format = AV_SAMPLE_FMT_FLTP};
    ASSERT_NE(pass(is_float), nullptr);
    lose(is_float);
    ASSERT_NE(pass({.format = AV_SAMPLE_FMT_S32, .channels = 3}), nullptr);
    const auto out = pass(at48000_);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->getInfo().format, AV_SAMPLE_FMT_S16);
}

// The first frame of a stream sets its output format, even if it bypassed the effect.
TEST_F(FilterAfterLostFrame, KeepsTheOutputFormatOfTheSameStream) {
    const FrameSpec is_float{.format = AV_SAMPLE_FMT_FLTP};
    for (const bool is_lost_before_flush : {false, true}) {
        SCOPED_TRACE(is_lost_before_flush);
        start(R"("enable_normalizer": true)");
        if (is_lost_before_flush) lose(at48000_);
        filter_->flush();
        filter_->setInvalid(true);
        ASSERT_NE(pass(at48000_), nullptr);
        filter_->setInvalid(false);
        for (int round = 0; round < 2; ++round) {
            const auto out = pass(is_float);
            ASSERT_NE(out, nullptr);
            EXPECT_EQ(out->getInfo().format, AV_SAMPLE_FMT_S16);
            lose(is_float);
        }
    }
}

}  // namespace
}  // namespace test
