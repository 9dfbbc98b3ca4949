// The bypass: the unprocessed sound, in step with the effect's, and a switch that does not click.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::kLv2Kinds;
using test::Lv2Plugin;
using test::Planes;

constexpr std::size_t kFrames = 48000;
constexpr double kMostSpike_db = 3.0;

// Processes a sound and sets bypass when the sound has reached each of these frames, in turn to on and off.
Planes switched(const test::Lv2Kind& kind, const Planes& in, const std::vector<std::size_t>& at,
                float first) {
    Lv2Plugin plugin(kind);
    plugin.control(test::kBypass) = first;
    Planes out(kind.channels_out, std::vector<float>(in[0].size()));
    std::size_t done = 0;
    for (std::size_t end : at) {
        while (done < end) {
            const std::size_t block = std::min<std::size_t>(100, end - done);
            plugin.run(in, out, done, block);
            done += block;
        }
        plugin.control(test::kBypass) = 1.0F - plugin.control(test::kBypass);
    }
    while (done < in[0].size()) {
        const std::size_t block = std::min<std::size_t>(100, in[0].size() - done);
        plugin.run(in, out, done, block);
        done += block;
    }
    return out;
}

// Returns by how much more a switch bends the sound than the steady sounds before and after it are bent.
double spike_db(const Planes& out, std::size_t at) {
    constexpr std::size_t kSteady_frames = 4800;
    constexpr std::size_t kFadeAndMore_frames = 4800;
    const double steady = std::max(
        test::secondDifference(out, at - kSteady_frames, at),
        test::secondDifference(out, at + kFadeAndMore_frames, at + kFadeAndMore_frames + kSteady_frames));
    return 20.0 * std::log10(test::secondDifference(out, at - 10, at + kFadeAndMore_frames) / steady);
}

TEST(Lv2Bypass, SwitchingOnASteadyToneDoesNotClick) {
    for (const auto& kind : kLv2Kinds) {
        double worst_db = -100.0;
        for (const double amplitude : {0.05, 0.5}) {
            const Planes in = test::tonePlanes(kind.channels_in, kFrames, amplitude);
            // At several phases of the tone.
            for (const std::size_t at : {30000U, 30027U, 30054U, 30081U}) {
                for (const float first : {0.0F, 1.0F}) {
                    worst_db = std::max(worst_db, spike_db(switched(kind, in, {at}, first), at));
                }
            }
        }
        EXPECT_LE(worst_db, kMostSpike_db) << kind.uri;
        RecordProperty(std::string("worst_spike_db ") + kind.uri, std::to_string(worst_db));
    }
}

TEST(Lv2Bypass, SwitchingToAndFroWithinAFadeDoesNotClick) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::tonePlanes(kind.channels_in, kFrames, 0.5);
        const Planes out = switched(kind, in, {30000, 30100, 30700, 30900, 32000}, 0.0F);
        EXPECT_LE(spike_db(out, 30000), kMostSpike_db) << kind.uri;
    }
}

TEST(Lv2Bypass, IsTheInputInStepWithTheEffect) {
    for (const auto& kind : kLv2Kinds) {
        if (kind.channels_in != kind.channels_out) continue;
        const Planes in = test::noisePlanes(30, kind.channels_in, kFrames, 32000);
        const Planes out = switched(kind, in, {}, 1.0F);
        const auto latency = static_cast<std::ptrdiff_t>(kind.latency_frames);
        for (std::size_t channel = 0; channel < kind.channels_in; ++channel) {
            EXPECT_TRUE(
                std::equal(in[channel].begin(), in[channel].end() - latency, out[channel].begin() + latency))
                << kind.uri << ", channel " << channel;
        }
    }
}

// A switch while the plug-in does not run is heard from the first frame on, without a fade.
TEST(Lv2Bypass, IsInForceAtOnceAfterAnActivation) {
    constexpr std::size_t kBlock = 4096;
    const test::Lv2Kind& kind = test::kNormalizerStereo;
    const Planes in = test::noisePlanes(31, kind.channels_in, kBlock, 3000);
    Planes first(kind.channels_out, std::vector<float>(kBlock));
    Planes again = first;
    Lv2Plugin plugin(kind);
    plugin.control(test::kBypass) = 0.0F;
    plugin.run(in, again, 0, kBlock);
    plugin.restart();
    plugin.control(test::kBypass) = 1.0F;
    plugin.run(in, again, 0, kBlock);
    Lv2Plugin fresh(kind);
    fresh.control(test::kBypass) = 1.0F;
    fresh.run(in, first, 0, kBlock);
    EXPECT_EQ(again, first);
}

TEST(Lv2Bypass, FoldsDownToStereoAsBs775Does) {
    constexpr double kHalfPower = 0.70710678;
    struct Row {
        const test::Lv2Kind& kind;
        std::vector<double> left;
        std::vector<double> right;
    };
    const Row rows[] = {
        {test::kSurround51, {1, 0, kHalfPower, 0, kHalfPower, 0}, {0, 1, kHalfPower, 0, 0, kHalfPower}},
        {test::kSurround71,
         {1, 0, kHalfPower, 0, kHalfPower, 0, kHalfPower, 0},
         {0, 1, kHalfPower, 0, 0, kHalfPower, 0, kHalfPower}},
    };
    for (const Row& row : rows) {
        for (std::size_t channel = 0; channel < row.kind.channels_in; ++channel) {
            Planes in(row.kind.channels_in, std::vector<float>(1000));
            in[channel][300] = 0.5F;
            const Planes out = switched(row.kind, in, {}, 1.0F);
            EXPECT_NEAR(out[0][540], 0.5 * row.left[channel], 1e-6) << channel;
            EXPECT_NEAR(out[1][540], 0.5 * row.right[channel], 1e-6) << channel;
            EXPECT_EQ(std::count(out[0].begin(), out[0].end(), 0.0F), row.left[channel] > 0 ? 999 : 1000);
        }
    }
}

// After the fade the effect is as if it had never been bypassed.
TEST(Lv2Bypass, TheEffectGoesOnWhileItIsBypassed) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(31, kind.channels_in, kFrames);
        const Planes all_the_time = Lv2Plugin(kind).process(in);
        const Planes out = switched(kind, in, {10000, 20000}, 0.0F);
        for (std::size_t channel = 0; channel < kind.channels_out; ++channel) {
            EXPECT_TRUE(std::equal(out[channel].begin() + 23000, out[channel].end(),
                                   all_the_time[channel].begin() + 23000))
                << kind.uri;
        }
    }
}

}  // namespace
