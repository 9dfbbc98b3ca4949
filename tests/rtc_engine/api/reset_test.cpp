// sonivex_reset: what follows has the same bits as the output of a new effect.
#include <gtest/gtest.h>

#include <string>

#include "common_effects.h"
#include "support/effects/call_sizes.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::CommonEffect;
using test::Pcm;

// Clips, and ends amid a block, a partition and a limited peak.
Pcm loudProgramme(int channels) {
    Pcm all = test::bursts(1, channels * 15000);
    test::append(all, test::square(channels * 4973, 50 * channels, 32767));
    return all;
}

constexpr std::size_t kLoud_frames = 15000 + 4973;

// Quiet enough for a limiter or a gain that is not reset to show.
Pcm quietProgramme(int channels) {
    Pcm all = test::noise(2, channels * 12000, 900);
    test::append(all, test::bursts(3, channels * 8480));
    return all;
}

constexpr std::size_t kQuiet_frames = 12000 + 8480;

test::Planes streamedQuietly(SonivexEffect* effect, int channels) {
    return test::streamed(effect, test::planesOf(quietProgramme(channels), channels),
                          test::randomCalls(4, kQuiet_frames, 700));
}

TEST(EffectReset, MakesAStreamLikeThatOfANewEffect) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto expected = streamedQuietly(kind.make().get(), kind.channels_in);
        const auto used = kind.make();
        for (int round = 0; round < 2; ++round) {
            test::streamed(used.get(), test::planesOf(loudProgramme(kind.channels_in), kind.channels_in),
                           test::randomCalls(5, kLoud_frames, 700));
            sonivex_reset(used.get());
            EXPECT_EQ(streamedQuietly(used.get(), kind.channels_in), expected) << "round " << round;
        }
    }
}

// The sound after the silence begins amid a partition of surround's convolution, as it does after most seeks.
TEST(EffectReset, IsCompleteBeforeAStreamThatBeginsSilently) {
    for (const CommonEffect& kind : test::commonEffects()) {
        for (const std::size_t silent_frames : {1U, 17U, 240U, 255U, 1000U}) {
            SCOPED_TRACE(std::string(kind.name) + ", silent frames: " + std::to_string(silent_frames));
            Pcm in(silent_frames * static_cast<std::size_t>(kind.channels_in));
            test::append(in, test::noise(8, kind.channels_in * 3000, 900));
            const auto planes = test::planesOf(in, kind.channels_in);
            const auto calls = test::callsOf(static_cast<int>(silent_frames) + 3000, silent_frames + 3000);
            const auto used = kind.make();
            test::streamed(used.get(), test::planesOf(loudProgramme(kind.channels_in), kind.channels_in),
                           test::randomCalls(5, kLoud_frames, 700));
            sonivex_reset(used.get());
            EXPECT_EQ(test::streamed(used.get(), planes, calls),
                      test::streamed(kind.make().get(), planes, calls));
        }
    }
}

TEST(EffectReset, MakesCallsLikeThoseOfANewEffect) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto calls = test::callsOf(480, kQuiet_frames);
        const Pcm in = quietProgramme(kind.channels_in);
        const Pcm expected = test::processed(kind.make().get(), in, calls);
        const auto used = kind.make();
        test::processed(used.get(), loudProgramme(kind.channels_in),
                        test::randomCalls(6, kLoud_frames, 1500));
        sonivex_reset(used.get());
        EXPECT_TRUE(test::sameSignal(test::processed(used.get(), in, calls), expected,
                                     {.channels = kind.channels_out}));
    }
}

TEST(EffectReset, LeavesANewEffectAsItIs) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const auto reset = kind.make();
        sonivex_reset(reset.get());
        EXPECT_EQ(streamedQuietly(reset.get(), kind.channels_in),
                  streamedQuietly(kind.make().get(), kind.channels_in));
    }
}

// Bursts that both channels share, which the voice level raises.
test::Planes streamedSpeech(SonivexEffect* effect) {
    const Pcm speech = test::widened(test::bursts(7, 20000));
    return test::streamed(effect, test::planesOf(speech, 2), test::callsOf(1000, 20000));
}

TEST(EffectReset, KeepsTheVoiceLevel) {
    const auto changed = test::makeDialogue(48000, 1.0);
    streamedSpeech(changed.get());
    EXPECT_EQ(sonivex_set_voice_level(changed.get(), 4.0), SONIVEX_OK);
    sonivex_reset(changed.get());
    const auto out = streamedSpeech(changed.get());
    EXPECT_EQ(out, streamedSpeech(test::makeDialogue(48000, 4.0).get()));
    EXPECT_NE(out, streamedSpeech(test::makeDialogue(48000, 1.0).get()));
}

TEST(EffectReset, OfNullDoesNothing) {
    sonivex_reset(nullptr);
}

TEST(VoiceLevel, ChangesFromTheNextBlockOn) {
    const Pcm speech = test::widened(test::bursts(7, 8 * 512));
    const auto changed = test::makeDialogue(48000, 0.0);
    const auto constant = test::makeDialogue(48000, 0.0);
    const auto calls = test::callsOf(512, 4 * 512);
    const Pcm later(speech.begin() + 4 * 1024, speech.end());
    EXPECT_EQ(test::processed(changed.get(), speech, calls), test::processed(constant.get(), speech, calls));
    EXPECT_EQ(sonivex_set_voice_level(changed.get(), 2.0), SONIVEX_OK);
    EXPECT_NE(test::processed(changed.get(), later, calls), test::processed(constant.get(), later, calls));
}

}  // namespace
