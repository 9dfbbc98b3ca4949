// Checks surround inside the filter: layouts, the player's format, and when options take effect.
#include <gtest/gtest.h>

#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "support/effects/surround_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

constexpr int kFourBlocks_frames = 960;  // whole blocks, so surround adds no queueing delay

FrameSpec specOf(int channels, AVSampleFormat format) {
    return {.format = format, .channels = channels, .frames = kFourBlocks_frames};
}

void startSurround(FilterUnderTest& filter, const std::string& more = "") {
    filter.options(R"({"enable_surround": true)" + more + "}");
    filter->setInvalid(false);
}

TEST(FilterSurround, OutputsStereoInThePlayersFormatForEveryLayoutAndType) {
    const struct {
        const char* options;
        int type, mode, limiter;
    } settings[] = {
        {R"(, "surround_effect_type": "3DSurround")", 1, 1, 1},
        {R"(, "surround_effect_type": "MegaBass", "surround_mode": 2, "surround_limiter": 0)", 13, 2, 0},
        {R"(, "surround_effect_type": "MegaBass", "surround_mode": 3)", 13, 3, 1},
    };
    for (const auto& setting : settings) {
        for (const int channels : {1, 2, 6, 8}) {
            for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S32}) {
                SCOPED_TRACE(std::string(setting.options) + ", channels " + std::to_string(channels) + ", " +
                             av_get_sample_fmt_name(format));
                FilterUnderTest filter;
                startSurround(filter, setting.options);
                SurroundEffect engine(channels, setting.type, setting.mode, setting.limiter);
                for (uint32_t call = 0; call < 3; ++call) {
                    auto frame = makeFrame(specOf(channels, format), noiseSource(call, 3000));
                    static_cast<AVFrame*>(*frame)->pts = 4711;
                    const auto expected = engine.process(surroundInput(samplesOf(*frame), channels));
                    const auto out = filter.pass(std::move(frame));
                    ASSERT_NE(out, nullptr);
                    const AVFrame* result = avFrameOf(out);
                    EXPECT_EQ(result->format, format);
                    EXPECT_EQ(result->ch_layout.nb_channels, 2);
                    EXPECT_EQ(Vorlin::av::layoutMask(result->ch_layout), Vorlin::av::defaultLayoutMask(2));
                    EXPECT_EQ(result->nb_samples, kFourBlocks_frames);
                    EXPECT_EQ(result->pts, 4711);
                    EXPECT_EQ(out->getInfo().channels, 2);
                    EXPECT_EQ(out->getInfo().format, format);
                    EXPECT_TRUE(holdsSamples(result, expected));
                }
            }
        }
    }
}

TEST(FilterSurround, TreatsMonoLikeStereoWithEqualChannels) {
    FilterUnderTest mono;
    FilterUnderTest stereo;
    startSurround(mono);
    startSurround(stereo);
    const auto same_on_both_sides = [random = noiseSource(7, 5000)](int frame, int) {
        return random(frame, 0);
    };
    const auto from_mono = mono.pass(makeFrame(specOf(1, AV_SAMPLE_FMT_S16), same_on_both_sides));
    const auto from_stereo = stereo.pass(makeFrame(specOf(2, AV_SAMPLE_FMT_S16), same_on_both_sides));
    ASSERT_NE(from_mono, nullptr);
    ASSERT_NE(from_stereo, nullptr);
    EXPECT_TRUE(holdsSamples(avFrameOf(from_mono), samplesOf(avFrameOf(from_stereo))));
}

TEST(FilterSurround, PassesOnFramesAtRatesWithoutResponses) {
    for (const int rate_hz : {16000, 32000, 96000}) {
        FilterUnderTest filter;
        startSurround(filter);
        auto frame = makeFrame({.channels = 6, .rate_hz = rate_hz}, noiseSource(1, 1000));
        const auto before = samplesOf(*frame);
        const auto out = filter.pass(std::move(frame));
        ASSERT_NE(out, nullptr);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), before));
    }
}

TEST(FilterSurround, ChangesTheTypeAtTheNextFlush) {
    SurroundEffect neutral(2, 1);
    SurroundEffect bass(2, 13, 3);
    resetEngineFaults();
    FilterUnderTest filter;
    startSurround(filter);
    const auto in = [] { return makeFrame(specOf(2, AV_SAMPLE_FMT_S16), noiseSource(2, 3000)); };
    const auto samples = samplesOf(*in());
    EXPECT_TRUE(holdsSamples(avFrameOf(filter.pass(in())), neutral.process(samples)));
    filter.options(R"({"surround_effect_type": "MegaBass", "surround_mode": 3})");
    EXPECT_TRUE(holdsSamples(avFrameOf(filter.pass(in())), neutral.process(samples)));
    filter->flush();
    EXPECT_EQ(filter.field(Peer::kSurroundHandle), nullptr);
    EXPECT_TRUE(holdsSamples(avFrameOf(filter.pass(in())), bass.process(samples)));
    EXPECT_EQ(engineFaults().surround_creates, 2);
}

TEST(FilterSurround, KeepsAHandlePerEffectAndSendsEachFrameThroughOneEffect) {
    resetEngineFaults();
    FilterUnderTest filter;
    startSurround(filter);
    HostLogCapture log;
    const auto in = [] { return makeFrame(specOf(6, AV_SAMPLE_FMT_FLTP), noiseSource(2, 3000)); };
    const auto channels_after = [&](const char* options) {
        filter.options(options);
        const auto out = filter.pass(in());
        return out ? avFrameOf(out)->ch_layout.nb_channels : 0;
    };
    EXPECT_EQ(channels_after(R"({"enable_surround": true})"), 2);
    EXPECT_EQ(channels_after(R"({"enable_normalizer": true})"), 6)
        << "the output graph follows the channel count";
    EXPECT_EQ(channels_after(R"({"enable_surround": true})"), 2);
    EXPECT_EQ(engineFaults().surround_creates, 1);
    EXPECT_EQ(engineFaults().creates, 1);
    EXPECT_EQ(engineFaults().channels_of_calls.size(), 1u);
    EXPECT_EQ(
        log.count(
            "48 sonivex creating surround handler. channels=6, sampleRate=48000, type=1, mode=1, limiter=1"),
        1);
}

TEST(FilterSurround, DropsAndLogsTheFrameOfAFailedCreationOrCall) {
    resetEngineFaults();
    FilterUnderTest filter;
    startSurround(filter);
    HostLogCapture log;
    const auto in = [] { return makeFrame(specOf(2, AV_SAMPLE_FMT_S16), noiseSource(2, 3000)); };
    engineFaults().surround_creates_to_fail = 1;
    EXPECT_EQ(filter.pass(in()), nullptr);
    EXPECT_EQ(log.count("24 sonivex createSurround failed!"), 1);
    EXPECT_NE(filter.pass(in()), nullptr);
    engineFaults().surround_result = -3;
    EXPECT_EQ(filter.pass(in()), nullptr);
    EXPECT_EQ(log.count("16 sonivex ProcessSurround failed! ret=-3"), 1);
    engineFaults().surround_result = 0;
    EXPECT_NE(filter.pass(in()), nullptr);
}

}  // namespace
}  // namespace test
