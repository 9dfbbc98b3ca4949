#include "surround_pipelines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

#include "au2_limiter_owner.h"
#include "rtc_engine/surround/core/convolve_reverb/convolve_reverb_inspector.h"
#include "support/effects/surround_record.h"
#include "support/logs/effect_log_capture.h"
#include "support/memory/guarded_block.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::GuardedBlock;
using test::Pcm;
using test::SurroundEffect;

using PipelineFunction = int (*)(void*, short*, short*, int);

struct Pipeline {
    PipelineFunction function;
    int type;
    int channels;
    std::string null_line;
};

const Pipeline kPipelines[] = {
    {ProcessSurround_Kelvo_Bingo_2, 1, 2, "194) [KelvoSurround]::kv surround handle is NULL.\n"},
    {ProcessSurround_Kelvo_Bingo_5_1, 1, 6, "276) [audio]::kv surround handle is NULL.\n"},
    {ProcessSurround_Kelvo_Bingo_7_1, 1, 8, "360) [audio]::kv surround handle is NULL.\n"},
    {ProcessSurround_Kelvo_Surround_2_To_Nangua, 13, 2, "444) [audio]::kv surround handle is NULL.\n"},
    {ProcessSurround_Kelvo_Surround_5_1_To_Nangua, 13, 6, "527) [audio]::kv surround handle is NULL.\n"},
    {ProcessSurround_Kelvo_Surround_7_1_To_Nangua, 13, 8, "612) [audio]::kv surround handle is NULL.\n"}};

bool isSilent(const Pcm& pcm) {
    return std::count(pcm.begin(), pcm.end(), 0) == static_cast<std::ptrdiff_t>(pcm.size());
}

TEST(SurroundPipelines, ANullHandleIsLoggedAndRejected) {
    for (const Pipeline& pipeline : kPipelines) {
        const test::EffectLogCapture log;
        Pcm in(8 * 240, 1);
        GuardedBlock out(480);
        EXPECT_EQ(pipeline.function(nullptr, in.data(), out.data(), 240), 0);
        EXPECT_TRUE(out.isUntouched());
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0], "[ZubrelAem]: (surround: " + pipeline.null_line);
    }
}

TEST(SurroundPipelines, DispatchCallsThePipelineOfTheTypeAndChannels) {
    for (const Pipeline& pipeline : kPipelines) {
        Pcm in = test::bursts(1, pipeline.channels * 2400);
        SurroundEffect dispatched(pipeline.channels, pipeline.type);
        const Pcm expected = dispatched.process(in);
        EXPECT_FALSE(isSilent(expected));
        const SurroundEffect direct(pipeline.channels, pipeline.type);
        Pcm out(4800);
        EXPECT_EQ(pipeline.function(direct.handle(), in.data(), out.data(), 2400), 2400);
        EXPECT_TRUE(test::sameSignal(out, expected));
    }
}

struct MadeFor {
    int type;
    int channels;
};

constexpr MadeFor kEveryHandle[] = {{1, 1}, {1, 2}, {1, 6}, {1, 8}, {13, 1}, {13, 2}, {13, 6}, {13, 8}};

// Tries all 48 combinations of six pipelines and eight kinds of handles.
TEST(SurroundPipelines, AHandleForOtherChannelsOrAnotherTypeIsRejected) {
    int refused = 0;
    for (const auto& [type, channels] : kEveryHandle) {
        SurroundEffect surround(channels, type);
        const SurroundHandle& record = test::recordOf(surround);
        const auto width = static_cast<int>(test::surroundWidth(channels));
        for (const Pipeline& pipeline : kPipelines) {
            if (pipeline.type == type && pipeline.channels == width) continue;
            ++refused;
            const test::EffectLogCapture log;
            Pcm in(8 * 240, 1);
            GuardedBlock out(480);
            EXPECT_EQ(pipeline.function(surround.handle(), in.data(), out.data(), 240), 0);
            EXPECT_EQ(pipeline.function(surround.handle(), in.data(), out.data(), 1), 0);
            EXPECT_EQ(pipeline.function(surround.handle(), nullptr, nullptr, 240), 0);
            EXPECT_TRUE(out.isUntouched());
            EXPECT_EQ(record.inRing->writeIndex, 0);
            EXPECT_EQ(record.outRing->writeIndex, 0);
            EXPECT_TRUE(log.lines().empty());
        }
    }
    EXPECT_EQ(refused, 48 - 8);
}

// Loud sound has just begun, so its tail reveals any call that renders something.
TEST(SurroundPipelines, ARejectedCallDoesNotChangeLaterSound) {
    for (const auto& [type, channels] : kEveryHandle) {
        const std::size_t width = test::surroundWidth(channels);
        SurroundEffect disturbed(channels, type);
        SurroundEffect alone(channels, type);
        for (std::uint64_t block = 0; block < 4; ++block) {
            Pcm in =
                block < 2 ? test::noise(block, static_cast<int>(300 * width), 20000) : Pcm(300 * width, 0);
            EXPECT_TRUE(test::sameSignal(disturbed.process(in), alone.process(in)));
            for (const Pipeline& pipeline : kPipelines) {
                if (pipeline.type == type && pipeline.channels == static_cast<int>(width)) continue;
                Pcm other(8 * 480, 15000);
                Pcm out(2 * 480);
                for (const int frames : {480, 240, 1, 0, -1}) {
                    pipeline.function(disturbed.handle(), other.data(), out.data(), frames);
                }
                EXPECT_EQ(out, Pcm(2 * 480, 0));
            }
        }
    }
}

TEST(SurroundPipelines, ACorruptedHandleGetsNoOutput) {
    SurroundEffect surround(2, 1);
    const Pcm in(480, 1);
    GuardedBlock out(480);
    SurroundHandle& record = test::recordOf(surround);
    record.layout = nullptr;
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), in.data(), out.data(), 240), 0);
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), in.data(), out.data(), 0), 0);
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), nullptr, nullptr, -5), -10);
    for (const Pipeline& pipeline : kPipelines) {
        Pcm samples(8 * 240, 1);
        EXPECT_EQ(pipeline.function(surround.handle(), samples.data(), out.data(), 240), 0);
        EXPECT_EQ(pipeline.function(surround.handle(), nullptr, nullptr, -5), -5);
    }
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(record.inRing->writeIndex, 0);
}

TEST(SurroundPipelines, FramesBelowOneReturnBeforeAnyOtherCheck) {
    const short in = 1;
    GuardedBlock out(1);
    const test::EffectLogCapture log;
    for (const auto& [type, channels] : kEveryHandle) {
        SurroundEffect surround(channels, type);
        for (void* const called : {surround.handle(), static_cast<void*>(nullptr)}) {
            for (const int frames : {0, -1, -5, -240, INT_MIN / 2}) {
                EXPECT_EQ(aem_ProcessSurround(called, &in, out.data(), frames), 2 * frames);
                EXPECT_EQ(aem_ProcessSurround(called, nullptr, out.data(), frames), 2 * frames);
                EXPECT_EQ(aem_ProcessSurround(called, &in, nullptr, frames), 2 * frames);
                EXPECT_EQ(aem_ProcessSurround(called, nullptr, nullptr, frames), 2 * frames);
            }
            EXPECT_EQ(aem_ProcessSurround(called, nullptr, nullptr, INT_MIN), 0);
            EXPECT_EQ(aem_ProcessSurround(called, nullptr, nullptr, INT_MIN / 2 - 1), 0);
        }
        for (const Pipeline& pipeline : kPipelines) {
            for (const int frames : {0, -1, -5, INT_MIN / 2, INT_MIN}) {
                EXPECT_EQ(pipeline.function(surround.handle(), nullptr, nullptr, frames), frames);
            }
        }
        EXPECT_EQ(test::recordOf(surround).inRing->writeIndex, 0);
    }
    EXPECT_TRUE(out.isUntouched());
    EXPECT_TRUE(log.lines().empty());
}

TEST(SurroundPipelines, ANullHandleIsLoggedForAnyFrames) {
    for (const Pipeline& pipeline : kPipelines) {
        for (const int frames : {240, 1, 0, -1, INT_MIN}) {
            const test::EffectLogCapture log;
            EXPECT_EQ(pipeline.function(nullptr, nullptr, nullptr, frames), 0);
            ASSERT_EQ(log.lines().size(), 1U);
            EXPECT_EQ(log.lines()[0], "[ZubrelAem]: (surround: " + pipeline.null_line);
        }
    }
}

TEST(SurroundPipelines, IsSilentUntilTheFirstBlockIsComplete) {
    SurroundEffect surround(2, 1);
    const Pcm in(200, 9000);
    SurroundHandle& record = test::recordOf(surround);
    EXPECT_TRUE(isSilent(surround.process(in)));
    EXPECT_EQ(sonivex::fillLevel(*record.inRing), 200);
    EXPECT_EQ(sonivex::fillLevel(*record.outRing), 0);
    EXPECT_TRUE(isSilent(surround.process(in)));
    EXPECT_FALSE(isSilent(surround.process(in)));
    EXPECT_EQ(sonivex::fillLevel(*record.inRing), 2 * 60);
    EXPECT_EQ(sonivex::fillLevel(*record.outRing), 280);
}

TEST(SurroundPipelines, CallsOfOneBlockHaveNoLatency) {
    for (const int channels : {2, 6, 8}) {
        SurroundEffect surround(channels, 1);
        SurroundHandle& record = test::recordOf(surround);
        for (int call = 0; call < 5; ++call) {
            const Pcm in = test::noise(9, channels * 240, 9000);
            EXPECT_FALSE(isSilent(surround.process(in)));
            EXPECT_EQ(sonivex::fillLevel(*record.inRing), 0);
            EXPECT_EQ(sonivex::fillLevel(*record.outRing), 0);
        }
        EXPECT_EQ(record.inRing->writeIndex, 5 * 240 * channels % sonivex::kRingSamples);
        EXPECT_EQ(record.outRing->writeIndex, 5 * 480);
    }
}

TEST(SurroundPipelines, ACallWithoutFramesRendersQueuedInput) {
    SurroundEffect surround(2, 1);
    SurroundHandle& record = test::recordOf(surround);
    const Pcm waiting(700, 3000);
    sonivex::writeSamples(*record.inRing, waiting.data(), 700);
    GuardedBlock out(1);
    const short in = 1;
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), &in, out.data(), 0), 0);
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(sonivex::fillLevel(*record.inRing), 220);
    EXPECT_EQ(sonivex::fillLevel(*record.outRing), 480);
}

TEST(SurroundPipelines, NegativeFramesReadAndWriteNothing) {
    SurroundEffect surround(6, 13);
    GuardedBlock out(1);
    const short in = 1;
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), &in, out.data(), -1), -2);
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), &in, out.data(), -240), -480);
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(test::recordOf(surround).inRing->writeIndex, 0);
}

TEST(SurroundPipelines, NullArgumentsAreRejected) {
    SurroundEffect surround(2, 1);
    const Pcm in(480, 1);
    GuardedBlock out(480);
    const test::EffectLogCapture log;
    EXPECT_EQ(aem_ProcessSurround(nullptr, in.data(), out.data(), 240), 0);
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), nullptr, out.data(), 240), 0);
    EXPECT_EQ(aem_ProcessSurround(surround.handle(), in.data(), nullptr, 240), 0);
    EXPECT_TRUE(out.isUntouched());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(test::recordOf(surround).inRing->writeIndex, 0);
}

TEST(SurroundPipelines, SampleCountsBeyondAnIntAreRejected) {
    const short in = 1;
    GuardedBlock out(1);
    for (const int channels : {2, 6, 8}) {
        SurroundEffect surround(channels, 1);
        for (const int frames : {INT_MAX, INT_MAX / channels + 1, INT_MIN, INT_MIN / 2 - 1}) {
            EXPECT_EQ(aem_ProcessSurround(surround.handle(), &in, out.data(), frames), 0) << frames;
        }
        // For a negative count the return value is twice the count.
        for (const int frames : {INT_MIN / 2, INT_MIN / channels - 1, INT_MIN / channels}) {
            if (frames < INT_MIN / 2) continue;
            EXPECT_EQ(aem_ProcessSurround(surround.handle(), &in, out.data(), frames), 2 * frames) << frames;
        }
        EXPECT_EQ(test::recordOf(surround).inRing->writeIndex, 0);
    }
    EXPECT_TRUE(out.isUntouched());
}

TEST(SurroundPipelines, NothingOutsideTheOutputIsWritten) {
    for (const int channels : {1, 2, 6, 8}) {
        for (const int type : {1, 13}) {
            SurroundEffect surround(channels, type);
            for (const int frames : {1, 239, 240, 241, 5000, 45000}) {
                const auto samples = test::surroundWidth(channels) * static_cast<std::size_t>(frames);
                const Pcm in(samples, -700);
                GuardedBlock out(2 * static_cast<std::size_t>(frames));
                EXPECT_EQ(aem_ProcessSurround(surround.handle(), in.data(), out.data(), frames), 2 * frames);
                EXPECT_TRUE(out.guardsAreWhole()) << channels << " channels, " << frames << " frames";
                EXPECT_EQ(std::count(in.begin(), in.end(), -700), static_cast<std::ptrdiff_t>(samples));
            }
        }
    }
}

// Renders stereo with one tap from each channel to its own ear, so that only gain and conversions remain.
Pcm throughGain(const Pcm& in, float gain, int limiter) {
    SurroundEffect surround(2, 1, 0, limiter);
    ConvolveReverbInspector(*test::recordOf(surround).reverb)
        .plantGains(sonivex::kBingo2,
                    [gain](std::size_t agent) { return agent == 0 || agent == 3 ? gain : 0.0F; });
    return surround.process(in);
}

TEST(SurroundPipelines, TheHardClipTruncatesFractionsAndHoldsFullScale) {
    Pcm in(480, 0);
    in[0] = 32767;
    in[3] = -32768;
    const Pcm half = throughGain(in, 0.5F, 0);
    EXPECT_EQ(half[0], 16383);  // truncated from 16383.5
    EXPECT_EQ(half[3], -16384);
    const Pcm louder = throughGain(in, 1.5F, 0);
    EXPECT_EQ(louder[0], 32767);
    EXPECT_EQ(louder[3], -32768);
}

// The limiter's idle gain starts at 1; at the first sample its smoothing has moved it to 0.9998.
TEST(SurroundPipelines, TheLimiterGetsInt16UnitsWithASeparateScaleForEachSign) {
    Pcm in(480, 0);
    in[0] = 32767;
    const float scaled = 0.5F * 32767.0F;
    const auto limiter = sonivex::makeAu2Limiter();
    std::vector<float> units(480, 0.0F);
    units[0] = scaled;
    std::vector<float> expected(480);
    au2_limiter_proc(limiter.get(), units.data(), 480, expected.data());
    EXPECT_EQ(throughGain(in, 0.5F, 1)[0], static_cast<std::int16_t>(expected[0]));
}

// Both ears share one gain: a peak in the left ear lowers the right ear within the same frame.
TEST(SurroundPipelines, TheLimiterAppliesOneGainToBothEars) {
    Pcm in(480, 0);
    for (std::size_t i = 0; i < 480; i += 2) {
        in[i] = 32767;
        in[i + 1] = 8000;
    }
    const Pcm out = throughGain(in, 2.0F, 1);
    EXPECT_LE(out[400], 32440);
    EXPECT_NEAR(out[401], 16000.0 * 32440.32 / (2 * 32767.0), 200);
}

}  // namespace
