// Checks that the filter works for a framework that cannot ask how late it is.
#include <gtest/gtest.h>

#include <algorithm>

#include "SonivexFilter.h"
#include "vorlin/av_compat.h"

#if __has_include("vorlin/effect_timing.h")
#error "the copied headers must lack the timing"
#endif

namespace test {
namespace {

constexpr int kFrames = 1024;
constexpr int16_t kQuiet = 100;

TEST(OwnFramework, GetsTheEffectWithoutTheTiming) {
    Vorlin::sonivexFilter filter({}, {}, false);
    ASSERT_TRUE(filter.init(0));
    EXPECT_TRUE(
        filter.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", ""));
    filter.setInvalid(false);

    AVFrame* samples = av_frame_alloc();
    samples->format = AV_SAMPLE_FMT_S16;
    samples->sample_rate = 48000;
    samples->nb_samples = kFrames;
    ASSERT_EQ(Vorlin::av::setFrameDefaultLayout(samples, 2), 0);
    ASSERT_EQ(av_frame_get_buffer(samples, 0), 0);
    auto* values = reinterpret_cast<int16_t*>(samples->data[0]);
    std::fill_n(values, 2 * kFrames, kQuiet);

    std::unique_ptr<Vorlin::IQFFrame> frame = std::make_unique<Vorlin::AVQFFrame>(samples);
    ASSERT_EQ(filter.push(frame, 0), Vorlin::kSuccess);
    ASSERT_EQ(filter.pull(frame, 0), Vorlin::kSuccess);
    // The normalizer raises quiet sound by 20 dB.
    EXPECT_NEAR(reinterpret_cast<int16_t*>(samples->data[0])[2 * kFrames - 1], 10 * kQuiet, kQuiet);
}

}  // namespace
}  // namespace test
