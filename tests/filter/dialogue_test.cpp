// Checks dialogue enhancement inside the filter: its output, the life of its handle, and changes during a
// stream.
#include <gtest/gtest.h>

#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

constexpr int kTwoBlocks_frames = 1024;  // whole blocks, so every call returns audio

void startDialogue(FilterUnderTest& filter, const std::string& more = "") {
    filter.options(R"({"enable_dialoguenhance": true)" + more + "}");
    filter->setInvalid(false);
}

// Makes a frame with one noise in the centre and an independent one on each side.
std::unique_ptr<Vorlin::AVQFFrame> scene(uint32_t seed, AVSampleFormat format = AV_SAMPLE_FMT_S16,
                                         int rate_hz = 48000) {
    return makeFrame(
        {.format = format, .rate_hz = rate_hz, .frames = kTwoBlocks_frames},
        [middle = noiseSource(seed, 6000), sides = noiseSource(seed + 1000, 3000)](int frame, int channel) {
            return static_cast<int16_t>(middle(frame, 0) + sides(frame, channel));
        });
}

TEST(FilterDialogue, OutputsTheEffectsSamplesInThePlayersFormat) {
    for (const int rate_hz : {44100, 48000}) {
        for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S32}) {
            SCOPED_TRACE(std::to_string(rate_hz) + " Hz, " + av_get_sample_fmt_name(format));
            FilterUnderTest filter;
            startDialogue(filter, R"(, "dialoguenhance_voice": 1.75)");
            DialogueEffect engine({.rate_hz = rate_hz, .voice_level = 1.75});
            bool has_sounded = false;
            for (uint32_t call = 0; call < 6; ++call) {
                auto frame = scene(call, format, rate_hz);
                static_cast<AVFrame*>(*frame)->pts = 4711;
                const auto in = samplesOf(*frame);
                const auto expected = engine.process(in);
                const auto out = filter.pass(std::move(frame));
                ASSERT_NE(out, nullptr);
                const AVFrame* result = avFrameOf(out);
                EXPECT_EQ(result->format, format);
                EXPECT_EQ(result->ch_layout.nb_channels, 2);
                EXPECT_EQ(Vorlin::av::layoutMask(result->ch_layout), Vorlin::av::defaultLayoutMask(2));
                EXPECT_EQ(result->nb_samples, kTwoBlocks_frames);
                EXPECT_EQ(result->pts, 4711);
                EXPECT_EQ(out->getInfo().channels, 2);
                EXPECT_EQ(out->getInfo().format, format);
                EXPECT_TRUE(holdsSamples(result, expected));
                EXPECT_NE(expected, in);
                has_sounded = has_sounded || expected != std::vector<int16_t>(expected.size());
            }
            EXPECT_TRUE(has_sounded);
        }
    }
}

TEST(FilterDialogue, CreatesOneHandlePerStreamAndReleasesItOnFlush) {
    resetEngineFaults();
    HostLogCapture log;
    FilterUnderTest filter;
    startDialogue(filter, R"(, "dialoguenhance_voice": 2.5)");
    for (uint32_t call = 0; call < 3; ++call)
        ASSERT_NE(filter.pass(scene(call, AV_SAMPLE_FMT_S16, 44100)), nullptr);
    const DialogueSettings first{2, 44100, 1.0, 1.0, 2.5};
    EXPECT_EQ(engineFaults().dialogue_creates, std::vector{first});
    EXPECT_EQ(
        log.count("48 sonivex creating dialoguenhance handler. channels=2, sampleRate=44100, voice=2.500000"),
        1);
    filter.options(R"({"dialoguenhance_voice": 4})");
    ASSERT_NE(filter.pass(scene(3, AV_SAMPLE_FMT_S16, 44100)), nullptr);
    EXPECT_EQ(engineFaults().dialogue_creates, std::vector{first})
        << "the voice level stays until the next flush";
    EXPECT_EQ(engineFaults().dialogue_releases, 0);
    filter->flush();
    EXPECT_EQ(filter.field(Peer::kDialogueHandle), nullptr);
    EXPECT_EQ(engineFaults().dialogue_releases, 1);
    ASSERT_NE(filter.pass(scene(4)), nullptr);
    EXPECT_EQ(engineFaults().dialogue_creates, (std::vector{first, {2, 48000, 1.0, 1.0, 4.0}}));
}

TEST(FilterDialogue, DropsExactlyTheFrameWhoseHandleCreationFails) {
    resetEngineFaults();
    HostLogCapture log;
    Vorlin::sonivexFilter filter({}, {}, true);  // not initialised: the test runs the worker's loop
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_dialoguenhance": true})", "");
    filter.setInvalid(false);
    engineFaults().dialogue_creates_to_fail = 2;
    for (const int expected : {-1, -1, 0}) {
        std::unique_ptr<IQFFrame> frame = scene(1);
        ASSERT_EQ(filter.push(frame, 0), 0);
        EXPECT_EQ((filter.*Peer::kFilterLoop)(), expected);
        EXPECT_EQ(filter.pull(frame, 0), expected == 0 ? 0 : -35);
    }
    EXPECT_EQ(engineFaults().dialogue_creates.size(), 3u);
    EXPECT_EQ(log.count("24 sonivex createDialoguEnhance failed!"), 2);
}

TEST(FilterDialogue, DropsFramesWhileTheVoiceLevelExceedsAFloat) {
    HostLogCapture log;
    FilterUnderTest filter;
    startDialogue(filter, R"(, "dialoguenhance_voice": 1e39)");
    EXPECT_EQ(filter.pass(scene(1)), nullptr);
    EXPECT_EQ(log.count("24 sonivex createDialoguEnhance failed!"), 1);
    filter.options(R"({"dialoguenhance_voice": 1e38})");
    EXPECT_NE(filter.pass(scene(1)), nullptr);
}

TEST(FilterDialogue, DropsTheFrameOfAFailedCallAndKeepsTheHandle) {
    resetEngineFaults();
    HostLogCapture log;
    Vorlin::sonivexFilter filter({}, {}, true);
    filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_dialoguenhance": true})", "");
    filter.setInvalid(false);
    for (const int result : {0, -7, 0}) {
        engineFaults().dialogue_result = result;
        std::unique_ptr<IQFFrame> frame = scene(1);
        ASSERT_EQ(filter.push(frame, 0), 0);
        EXPECT_EQ((filter.*Peer::kFilterLoop)(), result == 0 ? 0 : -1);
        EXPECT_EQ(filter.pull(frame, 0), result == 0 ? 0 : -35);
    }
    EXPECT_EQ(engineFaults().dialogue_creates.size(), 1u);
    EXPECT_EQ(log.count("16 sonivex ProcessDialoguEnhance failed! ret=-7"), 1);
}

TEST(FilterDialogue, KeepsTheStateOfEveryEffectAcrossSwitches) {
    resetEngineFaults();
    FilterUnderTest filter;
    startDialogue(filter);
    DialogueEffect dialogue;
    SurroundEffect surround(2, 1);
    NormalizerEffect normalizer(2);
    resetEngineFaults();
    for (uint32_t call = 0; call < 9; ++call) {
        SCOPED_TRACE(call);
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP, .frames = 15 * 512}, noiseSource(call, 3000));
        const auto in = samplesOf(*frame);
        std::vector<int16_t> expected;
        if (call % 3 == 0) {
            filter.options(R"({"enable_dialoguenhance": true})");
            expected = dialogue.process(in);
        } else if (call % 3 == 1) {
            filter.options(R"({"enable_surround": true})");
            expected = surround.process(in);
        } else {
            filter.options(R"({"enable_normalizer": true})");
            expected = normalizer.process(in);
        }
        const auto out = filter.pass(std::move(frame));
        ASSERT_NE(out, nullptr);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
    }
    EXPECT_EQ(engineFaults().dialogue_creates.size(), 1u);
    EXPECT_EQ(engineFaults().surround_creates, 1);
    EXPECT_EQ(engineFaults().creates, 1);
    EXPECT_EQ(engineFaults().dialogue_releases, 0);
    EXPECT_EQ(engineFaults().surround_releases, 0);
    EXPECT_EQ(engineFaults().releases, 0);
    filter->flush();
    EXPECT_EQ(filter.field(Peer::kDialogueHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kSurroundHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kNormalizerHandle), nullptr);
    EXPECT_EQ(engineFaults().dialogue_releases, 1);
    EXPECT_EQ(engineFaults().surround_releases, 1);
    EXPECT_EQ(engineFaults().releases, 1);
}

TEST(FilterDialogue, NeverReceivesABlockWithAnotherChannelCountThanItsGraph) {
    resetEngineFaults();
    FilterUnderTest filter;
    filter.startNormalizer();
    ASSERT_NE(filter.pass(makeFrame({.channels = 6}, noiseSource(1))), nullptr);
    filter.options(R"({"enable_dialoguenhance": true})");
    EXPECT_EQ(filter.pass(scene(1)), nullptr) << "the stream changed without a flush";
    EXPECT_TRUE(engineFaults().dialogue_creates.empty());
    filter->flush();
    EXPECT_NE(filter.pass(scene(1)), nullptr);
}

}  // namespace
}  // namespace test
