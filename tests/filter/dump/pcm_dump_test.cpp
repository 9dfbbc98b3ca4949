// Checks the contents of dump files: the blocks that go into an effect and come out of it.
#include <gtest/gtest.h>

#include <filesystem>

#include "dump_directory.h"
#include "dumping_filter.h"
#include "filter/faults/allocation_limit.h"
#include "filter/faults/engine_faults.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "support/frames/frame_matchers.h"

namespace test {
namespace {

constexpr int kFrames = 960;  // whole blocks of surround, so it adds no queueing delay

TEST(FilterDump, HoldsNormalizerInputAndOutputForAnyPlayerFormat) {
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S32}) {
        for (const int channels : {1, 2, 6, 8}) {
            SCOPED_TRACE(std::string(av_get_sample_fmt_name(format)) + ", channels " +
                         std::to_string(channels));
            const DumpDirectory directory;
            FilterUnderTest filter;
            startDumping(filter, R"("enable_normalizer": true)");
            NormalizerEffect engine(channels);
            Pcm in;
            Pcm out;
            for (uint32_t call = 0; call < 4; ++call) {
                auto frame = makeFrame({.format = format, .channels = channels, .frames = 600},
                                       noiseSource(call, 2000));
                const auto samples = samplesOf(*frame);
                append(in, samples);
                append(out, engine.process(samples));
                ASSERT_NE(filter.pass(std::move(frame)), nullptr);
            }
            const auto path = [&](const char* stage) {
                return directory.file(dumpFileName("normalizer", stage, sessionOf(filter)));
            };
            EXPECT_TRUE(sameSignal(samplesInFile(path("input")), in, {.channels = channels}));
            EXPECT_TRUE(sameSignal(samplesInFile(path("output")), out, {.channels = channels}));
            EXPECT_EQ(directory.names().size(), 2u);
        }
    }
}

TEST(FilterDump, Holds12BytesPer5Point1InputFrameAnd4PerOutputFrameOfSurround) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_surround": true)");
    SurroundEffect engine(6, 1);
    Pcm in;
    Pcm out;
    for (uint32_t call = 1; call <= 3; ++call) {
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP, .channels = 6, .frames = kFrames},
                               noiseSource(call, 3000));
        append(in, samplesOf(*frame));
        append(out, engine.process(samplesOf(*frame)));
        ASSERT_NE(filter.pass(std::move(frame)), nullptr);
        const auto input = directory.file(dumpFileName("surround", "input", sessionOf(filter)));
        const auto output = directory.file(dumpFileName("surround", "output", sessionOf(filter)));
        EXPECT_EQ(std::filesystem::file_size(input), 12u * kFrames * call);
        EXPECT_EQ(std::filesystem::file_size(output), 4u * kFrames * call);
        EXPECT_TRUE(sameSignal(samplesInFile(input), in, {.channels = 6}));
        EXPECT_TRUE(sameSignal(samplesInFile(output), out));
    }
}

TEST(FilterDump, Holds4BytesPerInputAndOutputFrameOfDialogue) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_dialoguenhance": true, "dialoguenhance_voice": 2)");
    DialogueEffect engine({.rate_hz = 44100, .voice_level = 2});
    Pcm in;
    Pcm out;
    for (uint32_t call = 1; call <= 5; ++call) {
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP, .rate_hz = 44100}, noiseSource(call, 3000));
        append(in, samplesOf(*frame));
        append(out, engine.process(samplesOf(*frame)));
        ASSERT_NE(filter.pass(std::move(frame)), nullptr);
        const auto input = directory.file(dumpFileName("dialoguenhance", "input", sessionOf(filter)));
        const auto output = directory.file(dumpFileName("dialoguenhance", "output", sessionOf(filter)));
        EXPECT_EQ(std::filesystem::file_size(input), 4096u * call);
        EXPECT_EQ(std::filesystem::file_size(output), 4096u * call);
        EXPECT_TRUE(sameSignal(samplesInFile(input), in, {.rate_hz = 44100}));
        EXPECT_TRUE(sameSignal(samplesInFile(output), out, {.rate_hz = 44100}));
    }
    EXPECT_EQ(directory.names().size(), 2u);
}

TEST(FilterDump, HoldsMonoInputOfSurroundAsOneChannel) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_surround": true)");
    auto frame = makeFrame({.channels = 1, .frames = kFrames}, noiseSource(1, 3000));
    const auto in = samplesOf(*frame);
    ASSERT_NE(filter.pass(std::move(frame)), nullptr);
    EXPECT_TRUE(
        sameSignal(samplesInFile(directory.file(dumpFileName("surround", "input", sessionOf(filter)))), in,
                   {.channels = 1}));
    EXPECT_TRUE(
        sameSignal(samplesInFile(directory.file(dumpFileName("surround", "output", sessionOf(filter)))),
                   SurroundEffect(1, 1).process(surroundInput(in, 1))));
}

TEST(FilterDump, DoesNotChangeTheAudio) {
    const DumpDirectory directory;
    FilterUnderTest dumped;
    FilterUnderTest plain;
    startDumping(dumped, R"("enable_normalizer": true)");
    plain.startNormalizer();
    for (uint32_t call = 0; call < 3; ++call) {
        const auto a = dumped.pass(makeFrame({}, noiseSource(call, 2000)));
        const auto b = plain.pass(makeFrame({}, noiseSource(call, 2000)));
        ASSERT_NE(a, nullptr);
        ASSERT_NE(b, nullptr);
        EXPECT_TRUE(holdsSamples(avFrameOf(a), samplesOf(avFrameOf(b))));
    }
}

TEST(FilterDump, HoldsOnlyFramesThatAnEffectProcesses) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    filter.options(R"({"enable_dump": true})");
    filter->setInvalid(false);
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr) << "no effect is on";
    filter.options(R"({"enable_surround": true})");
    ASSERT_NE(filter.pass(makeFrame({.rate_hz = 16000}, noiseSource(1))), nullptr)
        << "surround has no responses for this rate";
    filter->setInvalid(true);
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr) << "the filter is invalid";
    filter->setInvalid(false);
    filter.options(R"({"enable_dump": false})");
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr) << "the dump is off";
    EXPECT_EQ(directory.names(), std::vector<std::string>{});
    EXPECT_EQ(sessionOf(filter), "");
}

TEST(FilterDump, HoldsOnlyTheInputOfAFrameThatTheEffectLoses) {
    resetEngineFaults();
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    engineFaults().process_result = -2;
    EXPECT_EQ(filter.pass(makeFrame({.frames = 100}, noiseSource(1))), nullptr);
    resetEngineFaults();
    EXPECT_EQ(directory.names(),
              std::vector<std::string>{dumpFileName("normalizer", "input", sessionOf(filter))});
}

TEST(FilterDump, HoldsOnlyTheInputOfAFrameWhoseResultCannotBeStored) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    filter.options(R"({"enable_surround": true})");
    filter->setInvalid(false);
    const auto in = [] { return makeFrame({.channels = 6, .frames = kFrames}, noiseSource(1, 3000)); };
    ASSERT_NE(filter.pass(in()), nullptr)
        << "the next frame then needs no allocation but the buffer of its block";
    filter.options(R"({"enable_dump": true})");
    auto frame = in();
    const auto samples = samplesOf(*frame);
    {
        const AllocationLimit limit(2 * sizeof(int16_t) * kFrames - 1);
        EXPECT_EQ(filter.pass(std::move(frame)), nullptr);
    }
    EXPECT_EQ(directory.names(),
              std::vector<std::string>{dumpFileName("surround", "input", sessionOf(filter))});
    EXPECT_TRUE(sameSignal(samplesInFile(directory.file(directory.names().at(0))), samples, {.channels = 6}));
}

TEST(FilterDump, FollowsItsSwitchFrameByFrameWithinOneSession) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    filter.startNormalizer();
    Pcm in;
    for (const bool is_on : {false, true, false, true}) {
        filter.options(is_on ? R"({"enable_dump": true})" : R"({"enable_dump": false})");
        auto frame = makeFrame({}, noiseSource(is_on ? 1 : 2, 2000));
        if (is_on) append(in, samplesOf(*frame));
        ASSERT_NE(filter.pass(std::move(frame)), nullptr);
    }
    EXPECT_TRUE(sameSignal(
        samplesInFile(directory.file(dumpFileName("normalizer", "input", sessionOf(filter)))), in));
    EXPECT_EQ(directory.names().size(), 2u);
}

TEST(FilterDump, GivesSeveralEffectsOneSessionButSeparateFiles) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    filter.options(R"({"enable_surround": true})");
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    const auto id = sessionOf(filter);
    EXPECT_EQ(directory.names(),
              (std::vector<std::string>{
                  dumpFileName("normalizer", "input", id), dumpFileName("normalizer", "output", id),
                  dumpFileName("surround", "input", id), dumpFileName("surround", "output", id)}));
}

TEST(FilterDump, IgnoresEmptyAndInvalidBlocks) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    const short samples[4] = {1, 2, 3, 4};
    const auto dump = [&](const short* pcm, int channels, int frames, const char* effect) {
        ((*filter).*Peer::kDumpPcmData)(pcm, channels, frames, effect, true);
    };
    dump(nullptr, 2, 2, "surround");
    dump(samples, 2, 2, "");
    dump(samples, 0, 2, "surround");
    dump(samples, -1, 2, "surround");
    dump(samples, 2, -1, "surround");
    EXPECT_EQ(directory.names(), std::vector<std::string>{});
    EXPECT_EQ(sessionOf(filter), "");
    dump(samples, 2, 2, "surround");
    EXPECT_EQ(directory.names().size(), 1u);
}

}  // namespace
}  // namespace test
