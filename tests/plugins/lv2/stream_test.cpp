// The sound of the plug-ins is that of the effects, exactly as late as reported, however a host cuts it into
// blocks.
#include <gtest/gtest.h>

#include <cfenv>
#include <string>

#include "plugins/lv2/lv2_host.h"
#include "support/signals/lateness.h"

namespace {

using test::kLv2Kinds;
using test::Lv2Kind;
using test::Lv2Plugin;
using test::Planes;

constexpr std::size_t kFrames = 20000;

std::size_t reportedLatency(Lv2Plugin& plugin) {
    plugin.run(0);
    return static_cast<std::size_t>(plugin.control(test::kLatency));
}

TEST(Lv2Stream, IsTheEffectsSoundLaterByTheReportedLatency) {
    for (const auto& kind : kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        for (const int rate_hz : {44100, 48000}) {
            Lv2Plugin plugin(kind, rate_hz);
            const Planes in = test::noisePlanes(5, kind.channels_in, kFrames);
            // Dialogue enhancement itself is late by three of its hops of 512, the rest is the wait for a
            // block.
            const std::size_t own_delay = kind.effect == test::Lv2Effect::kDialogue ? 1536 : 0;
            const std::size_t waiting = reportedLatency(plugin) - own_delay;
            EXPECT_EQ(plugin.process(in), effectOutput(kind, {.rate_hz = rate_hz}, in, waiting));
        }
    }
}

TEST(Lv2Stream, LatencyMeasuredByCorrelationIsTheReportedOne) {
    // The sounds of surround begin within their responses, so only the other effects pass the input itself.
    for (const auto& kind : {test::kDialogue, test::kNormalizerStereo}) {
        SCOPED_TRACE(kind.uri);
        Lv2Plugin plugin(kind);
        const Planes in = test::noisePlanes(6, 2, kFrames, 2000);
        const Planes out = plugin.process(in, {777, 1, 64});
        std::vector<float> before;
        std::vector<float> after;
        for (std::size_t i = 0; i < kFrames; ++i) {
            for (std::size_t channel = 0; channel < 2; ++channel) {
                before.push_back(in[channel][i]);
                after.push_back(out[channel][i]);
            }
        }
        EXPECT_EQ(test::lateness(before, after, 3000), static_cast<int>(reportedLatency(plugin)));
    }
}

TEST(Lv2Stream, TypesRoomsAndLimiterAreThoseOfTheControlsFromTheFirstFrame) {
    for (const auto& kind : {test::kSurroundStereo, test::kSurround51, test::kSurround71}) {
        // Loud enough for the limiter.
        const Planes in = test::noisePlanes(7, kind.channels_in, kFrames, 32000);
        for (const int type : {1, 13}) {
            for (const int mode : {1, 2, 3}) {
                for (const int limiter : {0, 1}) {
                    SCOPED_TRACE(std::string(kind.uri) + " type " + std::to_string(type) + " mode " +
                                 std::to_string(mode) + " limiter " + std::to_string(limiter));
                    Lv2Plugin plugin(kind);
                    plugin.control(test::kType) = static_cast<float>(type);
                    plugin.control(test::kMode) = static_cast<float>(mode);
                    plugin.control(test::kLimiter) = static_cast<float>(limiter);
                    EXPECT_TRUE(
                        plugin.process(in) ==
                        effectOutput(kind, {.type = type, .mode = mode, .limiter = limiter}, in, 240));
                }
            }
        }
    }
}

TEST(Lv2Stream, VoiceLevelIsThatOfTheControl) {
    const Planes in = test::noisePlanes(8, 2, kFrames);
    for (const float voice : {1.0F, 2.5F, 10.0F}) {
        Lv2Plugin plugin(test::kDialogue);
        plugin.control(test::kVoice) = voice;
        EXPECT_TRUE(plugin.process(in) == effectOutput(test::kDialogue, {.voice = voice}, in, 512)) << voice;
    }
}

TEST(Lv2Stream, DoesNotDependOnTheBlocks) {
    const std::vector<std::vector<std::size_t>> cuts = {{1},   {7},    {63, 65},          {240},   {256},
                                                        {480}, {8192}, {1, 8192, 3, 511}, {20000}, {0, 100}};
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(9, kind.channels_in, kFrames);
        const Planes whole = Lv2Plugin(kind).process(in, {1024});
        for (const auto& blocks : cuts) {
            EXPECT_TRUE(Lv2Plugin(kind).process(in, blocks) == whole)
                << kind.uri << ", first block " << blocks.front();
        }
        test::Random random(10);
        std::vector<std::size_t> lengths;
        for (int i = 0; i < 50; ++i) lengths.push_back(static_cast<std::size_t>(random.between(1, 8192)));
        EXPECT_TRUE(Lv2Plugin(kind).process(in, lengths) == whole) << kind.uri << ", seed 10";
    }
}

TEST(Lv2Stream, DoesNotDependOnTheHostsRoundingMode) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(16, kind.channels_in, kFrames);
        const Planes expected = Lv2Plugin(kind).process(in);
        Lv2Plugin plugin(kind);
        std::fesetround(FE_UPWARD);
        const Planes out = plugin.process(in);
        std::fesetround(FE_TONEAREST);
        EXPECT_TRUE(out == expected) << kind.uri;
    }
}

TEST(Lv2Stream, WorksInTheMemoryOfItsInput) {
    for (const auto& kind : kLv2Kinds) {
        for (const float bypass : {0.0F, 1.0F}) {
            const Planes in = test::noisePlanes(11, kind.channels_in, kFrames);
            Lv2Plugin apart(kind);
            apart.control(test::kBypass) = bypass;
            const Planes expected = apart.process(in);

            // Each output stands in the memory of the input on the other side.
            Lv2Plugin plugin(kind);
            plugin.control(test::kBypass) = bypass;
            Planes shared = in;
            for (std::size_t i = 0; i < kind.channels_in; ++i) plugin.connect(i, shared[i].data());
            for (std::size_t i = 0; i < kind.channels_out; ++i) {
                plugin.connect(kind.channels_in + i, shared[i ^ 1U].data());
            }
            plugin.run(kFrames);
            for (std::size_t i = 0; i < kind.channels_out; ++i) {
                EXPECT_TRUE(shared[i ^ 1U] == expected[i]) << kind.uri << ", channel " << i;
            }
        }
    }
}

TEST(Lv2Stream, BeginsAnewAfterItIsActivatedAgain) {
    for (const auto& kind : kLv2Kinds) {
        const Planes loud = test::noisePlanes(12, kind.channels_in, 5000, 32000);
        const Planes in = test::noisePlanes(13, kind.channels_in, kFrames);
        Lv2Plugin plugin(kind);
        plugin.process(loud, {333});
        plugin.restart();
        EXPECT_TRUE(plugin.process(in) == Lv2Plugin(kind).process(in)) << kind.uri;
    }
}

TEST(Lv2Stream, TwoInstancesKeepToThemselves) {
    const auto& kind = test::kSurround51;
    const Planes first_in = test::noisePlanes(14, kind.channels_in, kFrames);
    const Planes second_in = test::noisePlanes(15, kind.channels_in, kFrames);
    Lv2Plugin first(kind);
    Lv2Plugin second(kind);
    second.control(test::kType) = 13;
    Planes first_out(2, std::vector<float>(kFrames));
    Planes second_out = first_out;
    for (std::size_t done = 0; done < kFrames; done += 500) {
        first.run(first_in, first_out, done, 500);
        second.run(second_in, second_out, done, 500);
    }
    EXPECT_TRUE(first_out == effectOutput(kind, {}, first_in, 240));
    EXPECT_TRUE(second_out == effectOutput(kind, {.type = 13}, second_in, 240));
}

}  // namespace
