#include "conditioner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::IsEmpty;

const Effect* const kNormalizer = findEffect("normalizer");
const Effect* const kSurround = findEffect("surround");

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<int> shorts(const FramePtr& frame) {
    const auto* samples = reinterpret_cast<const int16_t*>(frame->data[0]);
    return {samples, samples + frame->nb_samples * frame->ch_layout.nb_channels};
}

Conditioner conditionerFor(const AudioSpec& input, const Effect* effect) {
    return {planConversion(input, {effect}, {}), true};
}

TEST(Conditioner, ClipsAndCountsSamplesAboveFullScale) {
    Conditioner conditioner = conditionerFor(test::floatSpec(2), kNormalizer);
    FramePtr frame = test::floatFrame(2, 100, [](int i, int c) { return i < 25 && c == 0 ? -3.0F : 0.5F; });
    const auto samples = shorts(conditioner.convert(conditioner.repair(std::move(frame))));
    EXPECT_EQ(samples[0], -32768);
    EXPECT_EQ(samples[1], 16384);
    EXPECT_EQ(conditioner.counts().samples, 200U);
    EXPECT_EQ(conditioner.counts().above_full_scale, 25U);
    EXPECT_THAT(notesOn(conditioner.counts()),
                ElementsAre("25 samples (12 %) above full scale clipped before the effect"));
}

TEST(Conditioner, ReplacesSamplesThatAreNotFiniteBeforeTheResamplerSmearsThem) {
    Conditioner conditioner = conditionerFor(test::floatSpec(1, 96000), kNormalizer);
    const FramePtr frame = test::floatFrame(
        1, 9600, [](int i, int) { return i == 1000   ? kNan
                                         : i == 5000 ? -kInfinity
                                                     : 0.25F; }, 96000);
    FramePtr repaired = conditioner.repair(FramePtr(av_frame_clone(frame.get())));
    EXPECT_EQ(test::floatsOf(*repaired)[1000], 0.0F);
    EXPECT_TRUE(std::isnan(test::floatsOf(*frame)[1000]))
        << "a frame with other owners must keep its samples";
    std::vector<int> samples = shorts(conditioner.convert(std::move(repaired)));
    const auto rest = shorts(conditioner.flush());
    samples.insert(samples.end(), rest.begin(), rest.end());
    ASSERT_EQ(samples.size(), 4800U);
    for (const size_t i : {100U, 480U, 520U, 2480U, 2520U, 4700U}) EXPECT_NEAR(samples[i], 8192, 60) << i;
    EXPECT_EQ(conditioner.counts().not_finite, 2U);
    EXPECT_THAT(notesOn(conditioner.counts()),
                ElementsAre("2 samples of IN are NaN or infinite; silence replaces them"));
}

TEST(Conditioner, RepairsEveryPlaneOfPlanarSamples) {
    AudioSpec spec = test::floatSpec(2);
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_DBLP}) {
        spec.format = format;
        Conditioner conditioner = conditionerFor(spec, kNormalizer);
        FramePtr frame = makeFrame(spec, 8);
        for (int c = 0; c < 2; ++c) {
            for (int i = 0; i < 8; ++i) {
                const double value = i == c + 3 ? std::nan("") : 0.25;
                if (format == AV_SAMPLE_FMT_FLTP) {
                    reinterpret_cast<float*>(frame->extended_data[c])[i] = static_cast<float>(value);
                } else {
                    reinterpret_cast<double*>(frame->extended_data[c])[i] = value;
                }
            }
        }
        const auto samples = shorts(conditioner.convert(conditioner.repair(std::move(frame))));
        for (int c = 0; c < 2; ++c) {
            for (int i = 0; i < 8; ++i)
                EXPECT_EQ(samples[static_cast<size_t>(2 * i + c)], i == c + 3 ? 0 : 8192) << i << ", " << c;
        }
        EXPECT_EQ(conditioner.counts().not_finite, 2U);
    }
}

TEST(Conditioner, PassesSixteenBitSamplesThroughUntouched) {
    AudioSpec spec = test::floatSpec(2);
    spec.format = AV_SAMPLE_FMT_S16;
    Conditioner conditioner = conditionerFor(spec, kNormalizer);
    FramePtr frame = makeFrame(spec, 100);
    const uint8_t* before = frame->data[0];
    frame = conditioner.convert(conditioner.repair(std::move(frame)));
    EXPECT_EQ(frame->data[0], before);
    EXPECT_EQ(conditioner.flush(), nullptr);
    EXPECT_THAT(notesOn(conditioner.counts()), IsEmpty());
}

TEST(Conditioner, PutsFewerChannelsBesideSilentOnes) {
    Conditioner conditioner = conditionerFor(test::floatSpec(3), kNormalizer);
    FramePtr frame =
        test::floatFrame(3, 2, [](int i, int c) { return static_cast<float>(3 * i + c + 1) / 32768.0F; });
    EXPECT_THAT(shorts(conditioner.convert(std::move(frame))),
                ElementsAre(1, 2, 3, 0, 0, 0, 4, 5, 6, 0, 0, 0));
    EXPECT_EQ(conditioner.counts().samples, 6U) << "silent channels are not the input's";
}

TEST(Conditioner, CountsWhatAMixLiftsAboveFullScale) {
    AudioSpec spec = test::floatSpec(8);
    ASSERT_EQ(av_channel_layout_from_string(&spec.layout, "7.1(wide)"), 0);
    Conditioner conditioner = conditionerFor(spec, kSurround);
    FramePtr frame = makeFrame(spec, 10);
    auto* samples = reinterpret_cast<float*>(frame->data[0]);
    for (int i = 0; i < 80; ++i) samples[i] = 0.8F;
    const auto mixed = shorts(conditioner.convert(std::move(frame)));
    EXPECT_EQ(mixed[0], 32767);  // left and half of left-of-centre
    EXPECT_EQ(conditioner.counts().above_full_scale, 30U);
}

}  // namespace
