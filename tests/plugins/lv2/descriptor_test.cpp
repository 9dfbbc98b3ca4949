// How a host finds and makes the plug-ins.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::findLv2Descriptor;
using test::kLv2Kinds;
using test::Planes;

TEST(Lv2Descriptor, ListsEveryPlugInOnceAndThenEnds) {
    const auto function = test::lv2DescriptorFunction();
    ASSERT_NE(function, nullptr);
    std::set<std::string> uris;
    std::uint32_t count = 0;
    while (const LV2_Descriptor* descriptor = function(count)) {
        uris.insert(descriptor->URI);
        ++count;
    }
    EXPECT_EQ(count, kLv2Kinds.size());
    for (const auto& kind : kLv2Kinds) EXPECT_TRUE(uris.contains(kind.uri)) << kind.uri;
    EXPECT_EQ(function(count + 1), nullptr);
    EXPECT_EQ(function(std::numeric_limits<std::uint32_t>::max()), nullptr);
}

TEST(Lv2Descriptor, OffersAWorkerOnlyWhereEnginesChange) {
    for (const auto& kind : kLv2Kinds) {
        const LV2_Descriptor* const descriptor = findLv2Descriptor(kind.uri);
        const bool changes = kind.effect == test::Lv2Effect::kSurround;
        const bool offers = descriptor->extension_data != nullptr &&
                            descriptor->extension_data(LV2_WORKER__interface) != nullptr;
        EXPECT_EQ(offers, changes) << kind.uri;
        if (descriptor->extension_data != nullptr) {
            EXPECT_EQ(descriptor->extension_data("http://lv2plug.in/ns/ext/state#interface"), nullptr);
        }
    }
}

TEST(Lv2Descriptor, MakesAnInstanceForAHostWithoutFeatures) {
    for (const auto& kind : kLv2Kinds) {
        const LV2_Descriptor* const descriptor = findLv2Descriptor(kind.uri);
        for (const double rate_hz : {44100.0, 48000.0}) {
            const LV2_Handle instance = descriptor->instantiate(descriptor, rate_hz, "/", nullptr);
            EXPECT_NE(instance, nullptr) << kind.uri << " at " << rate_hz;
            descriptor->cleanup(instance);
        }
    }
}

TEST(Lv2Descriptor, RefusesARateThatIsNoRateOrThatSurroundDoesNotSupportAndLogsWhy) {
    const LV2_Descriptor* const descriptor = findLv2Descriptor(test::kSurround51.uri);
    test::FakeLv2Log log;
    const LV2_Feature log_feature = {LV2_LOG__log, log.log()};
    const LV2_Feature map_feature = {LV2_URID__map, log.map()};
    const LV2_Feature* const features[] = {&log_feature, &map_feature, nullptr};
    for (const double rate_hz : {96000.0, 32000.0, 0.0, -48000.0, 48000.5, 1e300, std::nan(""),
                                 std::numeric_limits<double>::infinity()}) {
        log.lines.clear();
        EXPECT_EQ(descriptor->instantiate(descriptor, rate_hz, "/", features), nullptr) << rate_hz;
        ASSERT_EQ(log.lines.size(), 1U) << rate_hz;
        EXPECT_EQ(log.lines[0], std::string(LV2_LOG__Error) + " sonivex.lv2: " + test::kSurround51.uri +
                                    ": the effect does not support this channel count, rate or type\n");
    }
}

TEST(Lv2Descriptor, SaysOnStandardErrorWhyItRefusesAHostWithoutALog) {
    const LV2_Descriptor* const descriptor = findLv2Descriptor(test::kSurroundStereo.uri);
    testing::internal::CaptureStderr();
    EXPECT_EQ(descriptor->instantiate(descriptor, 96000.0, nullptr, nullptr), nullptr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("surround-stereo"), std::string::npos);
}

TEST(Lv2Descriptor, ReportsTheLatencyBeforeTheFirstFrame) {
    for (const auto& kind : kLv2Kinds) {
        test::Lv2Plugin plugin(kind);
        plugin.run(0);
        EXPECT_EQ(plugin.control(test::kLatency), static_cast<float>(kind.latency_frames)) << kind.uri;
    }
}

TEST(Lv2Descriptor, EffectsWithoutResponsesTakeHigherRates) {
    const std::pair<double, float> rates[] = {{96000.0, 4096.0F}, {192000.0, 8192.0F}};
    for (const auto& [rate_hz, latency] : rates) {
        test::Lv2Plugin dialogue(test::kDialogue, rate_hz);
        const Planes in = test::noisePlanes(1, 2, 20000);
        dialogue.process(in, {333});
        EXPECT_EQ(dialogue.control(test::kLatency), latency);
        test::Lv2Plugin normalizer(test::kNormalizerStereo, rate_hz);
        normalizer.run(0);
        EXPECT_EQ(normalizer.control(test::kLatency), 512.0F);
    }
}

}  // namespace
