// Hosts that leave ports open, send damaged samples or set controls beyond their range.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::kLv2Kinds;
using test::Lv2Plugin;
using test::Planes;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::size_t kFrames = 12000;

TEST(Lv2BadInput, ABlockOfNoFramesTouchesNoSample) {
    for (const auto& kind : kLv2Kinds) {
        Lv2Plugin plugin(kind);
        for (std::size_t port = 0; port < kind.channels_in + kind.channels_out; ++port) {
            plugin.connect(port, nullptr);
        }
        for (int i = 0; i < 10; ++i) plugin.run(0);
        const Planes in = test::noisePlanes(20, kind.channels_in, kFrames);
        EXPECT_TRUE(plugin.process(in) == Lv2Plugin(kind).process(in)) << kind.uri;
    }
}

TEST(Lv2BadInput, AnInputThatIsNotConnectedIsSilent) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(21, kind.channels_in, kFrames);
        Planes silent_left = in;
        std::fill(silent_left[0].begin(), silent_left[0].end(), 0.0F);
        const Planes expected = Lv2Plugin(kind).process(silent_left, {kFrames});

        Lv2Plugin plugin(kind);
        Planes out(kind.channels_out, std::vector<float>(kFrames));
        plugin.run(in, out, 0, 0);  // connects everything
        plugin.connect(0, nullptr);
        plugin.run(kFrames);
        EXPECT_TRUE(out == expected) << kind.uri;
    }
}

TEST(Lv2BadInput, AnOutputThatIsNotConnectedIsLeftOut) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(22, kind.channels_in, kFrames);
        const Planes expected = Lv2Plugin(kind).process(in, {kFrames});
        Lv2Plugin plugin(kind);
        Planes out(kind.channels_out, std::vector<float>(kFrames));
        plugin.run(in, out, 0, 0);
        plugin.connect(kind.channels_in, nullptr);
        plugin.run(kFrames);
        EXPECT_TRUE(out.back() == expected.back()) << kind.uri;
        EXPECT_TRUE(out.front() == std::vector<float>(kFrames)) << kind.uri;
    }
}

TEST(Lv2BadInput, ControlsThatAreNotConnectedHaveTheirDefaults) {
    for (const auto& kind : kLv2Kinds) {
        const Planes in = test::noisePlanes(23, kind.channels_in, kFrames);
        Lv2Plugin plugin(kind);
        for (std::size_t control = 0; control < 5; ++control) {
            plugin.connect(kind.channels_in + kind.channels_out + control, nullptr);
        }
        EXPECT_TRUE(plugin.process(in) == Lv2Plugin(kind).process(in)) << kind.uri;
    }
}

TEST(Lv2BadInput, APortThatDoesNotExistIsIgnored) {
    for (const auto& kind : kLv2Kinds) {
        float value = 13.0F;
        Lv2Plugin plugin(kind);
        plugin.connect(1000, &value);
        plugin.connect(std::numeric_limits<std::uint32_t>::max(), &value);
        plugin.run(0);
        EXPECT_EQ(value, 13.0F);
    }
}

TEST(Lv2BadInput, SamplesThatAreNotFiniteOrFarTooLoudCountAsZero) {
    for (const auto& kind : kLv2Kinds) {
        for (const float bypass : {0.0F, 1.0F}) {
            Planes in = test::noisePlanes(24, kind.channels_in, kFrames);
            Planes damaged = in;
            const float bad[] = {kNan, kInfinity, -kInfinity, std::numeric_limits<float>::max(), -2.0e6F};
            for (std::size_t i = 100; i < kFrames; i += 997) {
                for (std::size_t channel = 0; channel < kind.channels_in; ++channel) {
                    in[channel][i] = 0.0F;
                    damaged[channel][i] = bad[(i + channel) % std::size(bad)];
                }
            }
            Lv2Plugin clean(kind);
            clean.control(test::kBypass) = bypass;
            Lv2Plugin plugin(kind);
            plugin.control(test::kBypass) = bypass;
            EXPECT_TRUE(plugin.process(damaged) == clean.process(in)) << kind.uri;
        }
    }
}

TEST(Lv2BadInput, ControlsOutOfRangeCountAsTheNearestValue) {
    struct Row {
        float type, mode, limiter;
        test::Lv2Settings counts_as;
    };
    const Row rows[] = {
        {-5.0F, 1.0F, 1.0F, {.type = 1}},
        {7.0F, 1.0F, 1.0F, {.type = 1}},
        {7.1F, 2.4F, 1.0F, {.type = 13, .mode = 2}},
        {1e9F, 99.0F, 7.0F, {.type = 13, .mode = 3}},
        {kInfinity, -kInfinity, -kInfinity, {.type = 13, .mode = 1, .limiter = 0}},
        {kNan, kNan, kNan, {.type = 1, .mode = 1, .limiter = 1}},
        {13.0F, kNan, 0.4F, {.type = 13, .mode = 1, .limiter = 0}},
    };
    const Planes in = test::noisePlanes(25, 2, kFrames, 32000);
    for (const Row& row : rows) {
        Lv2Plugin plugin(test::kSurroundStereo);
        plugin.control(test::kType) = row.type;
        plugin.control(test::kMode) = row.mode;
        plugin.control(test::kLimiter) = row.limiter;
        EXPECT_TRUE(plugin.process(in) == effectOutput(test::kSurroundStereo, row.counts_as, in, 240))
            << row.type << " " << row.mode << " " << row.limiter;
    }
    const std::pair<float, double> voices[] = {
        {-1.0F, 1.0}, {0.0F, 1.0}, {50.0F, 10.0}, {kNan, 1.0}, {kInfinity, 10.0}};
    for (const auto& [voice, counts_as] : voices) {
        Lv2Plugin plugin(test::kDialogue);
        plugin.control(test::kVoice) = voice;
        EXPECT_TRUE(plugin.process(in) == effectOutput(test::kDialogue, {.voice = counts_as}, in, 512))
            << voice;
    }
}

TEST(Lv2BadInput, BypassIsOnAboveZeroOnly) {
    const Planes in = test::noisePlanes(26, 2, kFrames);
    for (const float bypass : {-1.0F, -kInfinity, kNan, -0.0F}) {
        Lv2Plugin plugin(test::kNormalizerStereo);
        plugin.control(test::kBypass) = bypass;
        EXPECT_TRUE(plugin.process(in) == Lv2Plugin(test::kNormalizerStereo).process(in)) << bypass;
    }
    Planes late = in;
    for (auto& plane : late) {
        plane.insert(plane.begin(), 512, 0.0F);
        plane.resize(kFrames);
    }
    for (const float bypass : {1.0F, 0.001F, 17.0F, kInfinity}) {
        Lv2Plugin plugin(test::kNormalizerStereo);
        plugin.control(test::kBypass) = bypass;
        EXPECT_TRUE(plugin.process(in) == late) << bypass;
    }
}

TEST(Lv2BadInput, AHostThatNeverActivatesGetsSoundAllTheSame) {
    const LV2_Descriptor* const descriptor = test::findLv2Descriptor(test::kNormalizerStereo.uri);
    const LV2_Handle instance = descriptor->instantiate(descriptor, 48000.0, nullptr, nullptr);
    descriptor->run(instance, 4096);  // and without a single port
    Planes in = test::noisePlanes(27, 2, 2048);
    Planes out = in;
    for (std::uint32_t i = 0; i < 2; ++i) {
        descriptor->connect_port(instance, i, in[i].data());
        descriptor->connect_port(instance, 2 + i, out[i].data());
    }
    descriptor->run(instance, 2048);
    EXPECT_GT(*std::max_element(out[0].begin() + 600, out[0].end()), 0.0F);
    descriptor->cleanup(instance);
}

}  // namespace
