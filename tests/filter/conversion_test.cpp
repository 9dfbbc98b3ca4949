// Checks sample format conversion: every format comes out as it went in, and only the samples change.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

extern "C" {
#include <libavutil/dict.h>
}

#include "filter/faults/allocation_limit.h"
#include "filter/faults/filter_under_test.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

class FilterSampleFormats : public ::testing::TestWithParam<AVSampleFormat> {};

INSTANTIATE_TEST_SUITE_P(EveryFormat, FilterSampleFormats, ::testing::ValuesIn(allSampleFormats()),
                         [](const auto& parameter) { return av_get_sample_fmt_name(parameter.param); });

// Returns 16-bit samples with the precision that a format keeps.
std::vector<int16_t> asHeldBy(AVSampleFormat format, std::vector<int16_t> samples) {
    if (av_get_packed_sample_fmt(format) == AV_SAMPLE_FMT_U8) {
        for (int16_t& sample : samples) sample = static_cast<int16_t>((sample >> 8) * 256);
    }
    return samples;
}

// Expects that the line size covers the samples of a plane and lies inside its buffer.
void expectLineSizeOfItsSamples(const AVFrame* frame) {
    const auto format = static_cast<AVSampleFormat>(frame->format);
    const int in_a_plane = av_sample_fmt_is_planar(format) != 0 ? 1 : frame->ch_layout.nb_channels;
    EXPECT_GE(frame->linesize[0], frame->nb_samples * in_a_plane * av_get_bytes_per_sample(format));
    ASSERT_NE(frame->buf[0], nullptr);
    EXPECT_LE(static_cast<std::size_t>(frame->linesize[0]), frame->buf[0]->size);
}

TEST_P(FilterSampleFormats, CarryTheEffectsSamplesInTheirOwnFormat) {
    const AVSampleFormat format = GetParam();
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        for (const int channels : {1, 2, 6, 8}) {
            SCOPED_TRACE("channels " + std::to_string(channels));
            FilterUnderTest filter(mode);
            filter.startNormalizer();
            NormalizerEffect engine(channels);
            for (int call = 0; call < 3; ++call) {
                auto frame = makeFrame({.format = format, .channels = channels},
                                       noiseSource(static_cast<uint32_t>(call), 4000));
                const AVFrame* identity = *frame;
                const auto expected = asHeldBy(format, engine.process(samplesOf(identity)));
                const auto out = filter.pass(std::move(frame));
                ASSERT_NE(out, nullptr);
                const AVFrame* result = avFrameOf(out);
                EXPECT_EQ(result, identity) << "the result must be in the same AVFrame";
                EXPECT_EQ(result->format, format);
                EXPECT_EQ(result->nb_samples, 1024);
                EXPECT_EQ(result->sample_rate, 48000);
                EXPECT_EQ(result->ch_layout.nb_channels, channels);
                EXPECT_TRUE(holdsSamples(result, expected));
                expectLineSizeOfItsSamples(result);
                EXPECT_EQ(out->getInfo().format, format);
                EXPECT_EQ(out->getInfo().channels, channels);
                EXPECT_EQ(out->getInfo().nb_samples, 1024);
                EXPECT_EQ(out->getInfo().channel_layout, Vorlin::av::defaultLayoutMask(channels));
            }
        }
    }
}

TEST_P(FilterSampleFormats, KeepTimestampsSideDataAndMetadata) {
    const AVSampleFormat format = GetParam();
    for (const int64_t pts :
         {int64_t{0}, int64_t{-17}, int64_t{123456789012345}, INT64_MAX, AV_NOPTS_VALUE}) {
        FilterUnderTest filter;
        filter.startNormalizer();
        auto frame = makeFrame({.format = format}, noiseSource(1));
        AVFrame* av = *frame;
        av->pts = pts;
        av->pkt_dts = 4242;
        av->best_effort_timestamp = 4343;
        av->time_base = AVRational{1, 90000};
        Vorlin::av::setFrameDuration(av, 1920);
        av_dict_set(&av->metadata, "title", "an announcement", 0);
        AVFrameSideData* side_data = av_frame_new_side_data(av, AV_FRAME_DATA_REPLAYGAIN, 3);
        ASSERT_NE(side_data, nullptr);
        std::copy_n("abc", 3, side_data->data);

        const auto out = filter.pass(std::move(frame));
        ASSERT_NE(out, nullptr);
        const AVFrame* result = avFrameOf(out);
        EXPECT_EQ(result->pts, pts);
        EXPECT_EQ(result->pkt_dts, 4242);
        EXPECT_EQ(result->best_effort_timestamp, 4343);
        EXPECT_EQ(result->time_base.den, 90000);
        EXPECT_EQ(Vorlin::av::frameDuration(result), 1920);
        ASSERT_EQ(av_dict_count(result->metadata), 1);
        EXPECT_STREQ(av_dict_get(result->metadata, "title", nullptr, 0)->value, "an announcement");
        ASSERT_EQ(result->nb_side_data, 1);
        EXPECT_EQ(result->side_data[0]->type, AV_FRAME_DATA_REPLAYGAIN);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(result->side_data[0]->data),
                              result->side_data[0]->size),
                  "abc");
    }
}

TEST_P(FilterSampleFormats, DoNotModifyABufferThatTheDecoderStillHolds) {
    FilterUnderTest filter;
    filter.startNormalizer();
    auto frame = makeFrame({.format = GetParam()}, noiseSource(2, 3000));
    const Vorlin::OwnedAVFrame decoders_own(av_frame_clone(*frame));
    const auto before = samplesOf(decoders_own.get());
    const auto out = filter.pass(std::move(frame));
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(holdsSamples(decoders_own.get(), before));
    EXPECT_NE(samplesOf(avFrameOf(out)), before);
}

TEST(FilterConversion, KeepsTheLengthOfEveryFrame) {
    FilterUnderTest filter;
    filter.startNormalizer();
    NormalizerEffect engine(2);
    for (const int frames : {1024, 1, 7, 512, 4096, 513}) {
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP, .frames = frames}, noiseSource(9, 2000));
        const auto expected = engine.process(samplesOf(*frame));
        const auto out = filter.pass(std::move(frame));
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(avFrameOf(out)->nb_samples, frames);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
    }
}

TEST(FilterConversion, NeedsNoOutputGraphForSixteenBitAudio) {
    FilterUnderTest filter;
    filter.startNormalizer();
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    EXPECT_NE(filter.field(Peer::kFilterGraph), nullptr);
    EXPECT_EQ(filter.field(Peer::kOutFilterGraph), nullptr);
}

TEST(FilterConversion, DeliversSixteenBitUntilAFlushIfTheFirstFrameIsSixteenBit) {
    FilterUnderTest filter;
    filter.startNormalizer();
    filter->setInvalid(true);
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);  // bypassed, but it sets the format
    filter->setInvalid(false);
    const FrameSpec floats{.format = AV_SAMPLE_FMT_FLTP};
    auto out = filter.pass(makeFrame(floats, noiseSource(1, 3000)));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->format, AV_SAMPLE_FMT_S16);
    EXPECT_EQ(out->getInfo().format, AV_SAMPLE_FMT_S16);
    EXPECT_EQ(filter.field(Peer::kOutFilterGraph), nullptr);
    filter->flush();
    out = filter.pass(makeFrame(floats, noiseSource(1, 3000)));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->format, AV_SAMPLE_FMT_FLTP);
}

TEST(FilterConversion, UsesOneOutputGraphForAWholeStream) {
    FilterUnderTest filter;
    filter.startNormalizer();
    HostLogCapture log;
    for (int i = 0; i < 5; ++i)
        ASSERT_NE(filter.pass(makeFrame({.format = AV_SAMPLE_FMT_DBLP}, noiseSource(1))), nullptr);
    EXPECT_EQ(
        log.count("32 sonivex: output filter graph initialized. S16 -> dblp, channels=2, sample_rate=48000"),
        1);
    EXPECT_EQ(filter.field(Peer::kOutChannels), 2);
    EXPECT_EQ(filter.field(Peer::kOutSampleRate), 48000);
}

TEST(FilterConversion, FallsBackToSixteenBitForAnImpossibleFormat) {
    FilterUnderTest filter;
    filter.startNormalizer();
    auto strange = makeFrame({}, noiseSource(1));
    strange->getInfo().format = 99;
    strange->getInfo().channels = 3;  // passed on, but its format is recorded
    ASSERT_NE(filter.pass(std::move(strange)), nullptr);
    EXPECT_EQ(filter.field(Peer::kSrcFormat), 99);
    auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLT}, noiseSource(1, 3000));
    const auto expected = NormalizerEffect(2).process(samplesOf(*frame));
    const auto out = filter.pass(std::move(frame));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->format, AV_SAMPLE_FMT_S16);
    EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
}

TEST(FilterConversion, DeliversSixteenBitAfterAFailureAndRecoversWithTheNextFrame) {
    constexpr int kFrames = 65536;  // makes a block larger than any allocation for a graph
    HostLogCapture log;
    FilterUnderTest filter;
    filter.startNormalizer();
    NormalizerEffect engine(2);
    const FrameSpec doubles{.format = AV_SAMPLE_FMT_DBL, .frames = kFrames};
    for (const bool is_short_of_memory : {true, false, true, false}) {
        auto frame = makeFrame(doubles, noiseSource(4, 3000));
        static_cast<AVFrame*>(*frame)->pts = 777;
        const auto expected = engine.process(samplesOf(*frame));
        std::unique_ptr<IQFFrame> out;
        {
            // The limit admits the 16-bit block but not the doubles. A new output graph is forced, because an
            // old one would already have its buffers.
            if (is_short_of_memory) filter.field(Peer::kOutSampleRate) = -1;
            const AllocationLimit limit(is_short_of_memory ? kFrames * 2 * 4 : INT_MAX);
            out = filter.pass(std::move(frame));
        }
        ASSERT_NE(out, nullptr) << "a failed conversion must not lose the frame";
        EXPECT_EQ(avFrameOf(out)->format, is_short_of_memory ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_DBL);
        EXPECT_EQ(out->getInfo().format, avFrameOf(out)->format);
        EXPECT_EQ(avFrameOf(out)->pts, 777);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
    }
    EXPECT_EQ(log.count("24 sonivex: output format conversion failed (ret=-12), fallback to S16"), 2);
}

TEST(FilterConversion, LosesOnlyTheFrameThatFindsNoMemory) {
    FilterUnderTest filter;
    filter.startNormalizer();
    auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLT}, noiseSource(4));
    std::unique_ptr<IQFFrame> out;
    {
        const AllocationLimit limit(64);
        out = filter.pass(std::move(frame));
    }
    EXPECT_EQ(out, nullptr);
    EXPECT_NE(filter.pass(makeFrame({.format = AV_SAMPLE_FMT_FLT}, noiseSource(4))), nullptr);
}

}  // namespace
}  // namespace test
