// The effects' functions that process: no allocation, no lock and no system call, whatever the settings.
#include "support/each_vector_target.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <vector>

#include "common_effects.h"
#include "real_time/api/every_call.h"
#include "real_time/traps/kept_calls.h"
#include "real_time/traps/real_time_section.h"
#include "sonivex/vectors.h"
#include "support/effects/dialogue_effect.h"
#include "support/effects/normalizer_effect.h"
#include "support/effects/surround_effect.h"
#include "surround_pipelines.h"

namespace {

using test::Kept;
using test::KeptCalls;
using test::Pcm;
using test::RealTimeSection;

constexpr int kLongCall_frames = 4096;
constexpr int kCalls_frames[] = {240, 1, 100, 512, 1024, 241, kLongCall_frames, 0, -1, INT_MIN};

void makeEveryCall(const std::vector<test::CommonEffect>& kinds) {
    test::CallBuffers buffers;
    for (const test::CommonEffect& kind : kinds) {
        SCOPED_TRACE(kind.name);
        const auto effect = kind.make();
        const RealTimeSection section;
        test::makeEveryCall(effect.get(), buffers);
    }
}

TEST(EffectTraps, NoFunctionOfTheCommonInterfaceButCreationAndReleaseIsTrapped) {
    makeEveryCall(test::commonEffects());
}

TEST(EffectTraps, NoVectorTargetIsTrapped) {
    test::forEachVectorTarget([] { makeEveryCall(test::fewCommonEffects()); });
}

// Processes with one setting of surround, and makes calls that it must refuse.
void renderSurround(int channels, int type, int mode, int limiter, const Pcm& in, Pcm& out) {
    const test::SurroundEffect surround(channels, type, mode, limiter);
    const RealTimeSection section;
    for (const int frames : kCalls_frames) {
        aem_ProcessSurround(surround.handle(), in.data(), out.data(), frames);
        aem_ProcessSurround(surround.handle(), nullptr, out.data(), frames);
        aem_ProcessSurround(surround.handle(), in.data(), nullptr, frames);
        aem_ProcessSurround(nullptr, in.data(), out.data(), frames);
    }
}

TEST(EffectTraps, NoSettingOfSurroundIsTrapped) {
    const Pcm in = test::bursts(1, 8 * kLongCall_frames);
    Pcm out(2 * kLongCall_frames);
    for (const int channels : {1, 2, 6, 8}) {
        for (const int limiter : {0, 1}) {
            renderSurround(channels, 1, 1, limiter, in, out);
            for (const int mode : {1, 2, 3}) renderSurround(channels, 13, mode, limiter, in, out);
        }
    }
}

using Pipeline = int (*)(void*, short*, short*, int);

TEST(EffectTraps, NoPipelineOfSurroundIsTrapped) {
    constexpr Pipeline kPipelines[] = {ProcessSurround_Kelvo_Bingo_2,
                                       ProcessSurround_Kelvo_Bingo_5_1,
                                       ProcessSurround_Kelvo_Bingo_7_1,
                                       ProcessSurround_Kelvo_Surround_2_To_Nangua,
                                       ProcessSurround_Kelvo_Surround_5_1_To_Nangua,
                                       ProcessSurround_Kelvo_Surround_7_1_To_Nangua};
    Pcm in = test::bursts(2, 8 * kLongCall_frames);
    Pcm out(2 * kLongCall_frames);
    for (const int channels : {2, 6, 8}) {
        for (const int type : {1, 13}) {
            const test::SurroundEffect surround(channels, type);
            const RealTimeSection section;
            for (const Pipeline pipeline : kPipelines) {
                for (const int frames : kCalls_frames)
                    pipeline(surround.handle(), in.data(), out.data(), frames);
            }
        }
    }
}

TEST(EffectTraps, NoRateAndVoiceLevelOfDialogueEnhancementIsTrapped) {
    const Pcm in = test::bursts(3, 2 * kLongCall_frames);
    Pcm out(in.size());
    for (const int rate_hz : {8000, 16000, 44100, 48000, 96000, 192000}) {
        for (const double voice : {0.0, 1.0, 3.0}) {
            const test::DialogueEffect dialogue({.rate_hz = rate_hz, .voice_level = voice});
            const RealTimeSection section;
            for (const int frames : kCalls_frames) {
                aem_ProcessDialoguEnhance(dialogue.handle(), in.data(), out.data(), frames, rate_hz);
                aem_ProcessDialoguEnhance(dialogue.handle(), nullptr, out.data(), frames, rate_hz);
                aem_ProcessDialoguEnhance(dialogue.handle(), in.data(), nullptr, frames, rate_hz);
            }
        }
    }
}

// Processes with every channel count of the normalizer.
void normalize(const Pcm& in, Pcm& out) {
    for (int channels = 1; channels <= 20; ++channels) {
        const test::NormalizerEffect normalizer(channels);
        const RealTimeSection section;
        for (const int frames : kCalls_frames) {
            if (frames * std::int64_t{channels} > static_cast<std::int64_t>(in.size())) continue;
            aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), frames, channels);
            aem_ProcessNormalizer(normalizer.handle(), nullptr, out.data(), frames, channels);
            aem_ProcessNormalizer(normalizer.handle(), in.data(), nullptr, frames, channels);
        }
        aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 512, 0);
        aem_ProcessNormalizer(normalizer.handle(), in.data(), out.data(), 512, 21);
    }
}

// Its header says that the mixer allocates its working blocks.
TEST(EffectTraps, NothingInTheNormalizerIsTrappedButItsMixer) {
    const Pcm in = test::bursts(4, 20 * kLongCall_frames);
    Pcm out(in.size());
    {
        const KeptCalls kept({Kept::kMixer});
        normalize(in, out);
        EXPECT_GT(kept.count(Kept::kMixer), 20);
    }
    EXPECT_EXIT(normalize(in, out); _exit(0), testing::ExitedWithCode(test::kTrapExitCode), "malloc");
}

TEST(EffectTraps, TheNameOfTheVectorTargetIsNotTrapped) {
    const char* name = nullptr;
    {
        const RealTimeSection section;
        name = aem_VectorTarget();
    }
    EXPECT_STRNE(name, "");
}

}  // namespace
