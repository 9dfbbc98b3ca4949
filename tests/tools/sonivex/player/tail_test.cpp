// Checks that the tail of an effect follows the input only if the effect has sounded.
#include <gtest/gtest.h>

#include <algorithm>

#include "effect_chain.h"
#include "plugin_search.h"
#include "tools/sonivex/steered_filter/steering.h"

namespace {

using namespace sonivex_tool;

constexpr int kRate_hz = 48000;
constexpr int kCall_frames = 960;
constexpr int kCalls = 6;

// Plays calls of stereo through surround with its tail. @param steering first sample of the third call
// @return the frames that come out.
int64_t framesOut(int16_t steering) {
    AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_S16;
    spec.rate_hz = kRate_hz;
    spec.layout = defaultLayout(2);
    FilterSettings settings;
    settings.chain = {findEffect("surround")};
    settings.call_frames = kCall_frames;
    settings.keep_tail = true;
    settings.video_fps = 25.0;

    int64_t frames = 0;
    EffectChain chain(settings, loadPlugin(SONIVEX_STEERED_FILTER), spec,
                      [&frames](const FramePtr& frame) { frames += frame->nb_samples; });
    const FramePtr input = makeFrame(spec, kCalls * kCall_frames);
    auto* samples = reinterpret_cast<int16_t*>(input->data[0]);
    std::fill_n(samples, 2 * input->nb_samples, int16_t{0});
    samples[2 * 2 * kCall_frames] = steering;
    chain.push(*input);
    chain.finish();
    return frames;
}

TEST(EffectTail, FollowsTheInput) {
    constexpr int kTailOfStereo_frames = 13000;
    EXPECT_EQ(framesOut(0), kCalls * kCall_frames + kTailOfStereo_frames);
}

TEST(EffectTail, IsLeftOutIfTheFilterIsBypassed) {
    EXPECT_EQ(framesOut(test::kOverload), kCalls * kCall_frames);
}

}  // namespace
