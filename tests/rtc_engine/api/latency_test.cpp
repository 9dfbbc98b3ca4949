// sonivex_latency_frames and the functions with interleaved calls: the delay is measured.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "common_effects.h"
#include "support/effects/call_sizes.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::CommonEffect;
using test::Pcm;

// Returns the output of calls of whole blocks, which wait for nothing, this much later, and as many samples
// of it as such calls give.
Pcm lateOutput(const CommonEffect& kind, const Pcm& in, int delay_frames) {
    Pcm late(static_cast<std::size_t>(delay_frames * kind.channels_out), 0);
    test::append(late, kind.by_aem_functions(in, kind.block_frames));
    return late;
}

bool startsAlike(const Pcm& a, const Pcm& b) {
    return std::equal(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())),
                      b.begin());
}

std::ptrdiff_t onsetFrame(const Pcm& samples, int channels) {
    const auto first = std::find_if(samples.begin(), samples.end(), [](short sample) { return sample != 0; });
    EXPECT_NE(first, samples.end()) << "only silence came out";
    return (first - samples.begin()) / channels;
}

void expectReportedLatency(const CommonEffect& kind, int call_frames) {
    SCOPED_TRACE(kind.name + ", calls of " + std::to_string(call_frames));
    // All remainders of the block occur, and then several frames of dialogue enhancement come out.
    const int calls = 2 * kind.block_frames / std::gcd(kind.block_frames, call_frames) + 4 +
                      20 * kind.block_frames / call_frames;
    const Pcm in = test::noise(1, calls * call_frames * kind.channels_in, 3000);
    const auto effect = kind.make();
    const Pcm out =
        test::processed(effect.get(), in, std::vector<int>(static_cast<std::size_t>(calls), call_frames));
    const int reported = sonivex_latency_frames(effect.get(), call_frames);
    if (reported >= 0) {
        EXPECT_TRUE(startsAlike(out, lateOutput(kind, in, reported - kind.own_delay_frames)));
    } else {
        EXPECT_EQ(reported, SONIVEX_ERROR_GAPS);
        // The first frames of dialogue enhancement are silent, so a gap among them cannot be seen.
        if (kind.own_delay_frames > 0) return;
        const auto onset =
            onsetFrame(out, kind.channels_out) - onsetFrame(lateOutput(kind, in, 0), kind.channels_out);
        EXPECT_FALSE(startsAlike(out, lateOutput(kind, in, static_cast<int>(onset))));
    }
}

TEST(EffectLatency, IsThatOfTheSoundForEveryCallSize) {
    for (const CommonEffect& kind : test::fewCommonEffects()) {
        for (const int call_frames : {1,   2,   7,   32,  60,  64,  100, 120, 128,  240,  241,  256, 300,
                                      441, 480, 511, 512, 513, 768, 882, 960, 1000, 1024, 2048, 8192}) {
            expectReportedLatency(kind, call_frames);
        }
    }
}

TEST(EffectLatency, IsThatOfTheSoundForEveryEffectAndRate) {
    for (const CommonEffect& kind : test::commonEffects()) {
        for (const int call_frames : {64, 240, 480, 1024, 2048, 4096})
            expectReportedLatency(kind, call_frames);
    }
}

TEST(EffectLatency, ReportsKnownFigures) {
    const auto surround = test::makeSurround(2);
    EXPECT_EQ(sonivex_latency_frames(surround.get(), 480), 0);
    EXPECT_EQ(sonivex_latency_frames(surround.get(), 1024), 1024);
    EXPECT_EQ(sonivex_latency_frames(surround.get(), 60), 180);
    EXPECT_EQ(sonivex_stream_latency_frames(surround.get()), 240);
    const auto dialogue = test::makeDialogue(48000);
    EXPECT_EQ(sonivex_latency_frames(dialogue.get(), 512), 1536);
    EXPECT_EQ(sonivex_latency_frames(dialogue.get(), 256), 1792);
    EXPECT_EQ(sonivex_latency_frames(dialogue.get(), 300), SONIVEX_ERROR_GAPS);
    EXPECT_EQ(sonivex_stream_latency_frames(dialogue.get()), 2048);
    EXPECT_EQ(sonivex_stream_latency_frames(test::makeDialogue(192000).get()), 8192);
    EXPECT_EQ(sonivex_stream_latency_frames(test::makeNormalizer(2).get()), 512);
}

TEST(EffectCalls, HaveTheBytesOfTheEffectsOwnFunctions) {
    for (const CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        const Pcm in = test::bursts(4, kind.channels_in * 9600);
        for (const int call_frames : {100, 480, 1024}) {
            const auto calls = test::callsOf(call_frames, 9600);
            EXPECT_TRUE(test::sameSignal(test::processed(kind.make().get(), in, calls),
                                         kind.by_aem_functions(in, call_frames),
                                         {.channels = kind.channels_out}));
        }
    }
}

}  // namespace
