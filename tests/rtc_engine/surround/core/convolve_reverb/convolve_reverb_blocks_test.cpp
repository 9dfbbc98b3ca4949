// Compares blocks rendered together with blocks rendered one after the other, bit for bit.
#include <gtest/gtest.h>

#include <algorithm>

#include "convolve_reverb.h"
#include "layouts.h"
#include "support/each_vector_target.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

using PairFloats = std::vector<float>;

constexpr const sonivex::Layout* kPairedLayouts[] = {
    &sonivex::kBingo2,     &sonivex::kBingo51,    &sonivex::kBingo71, &sonivex::kSurround2,
    &sonivex::kSurround51, &sonivex::kSurround71, &sonivex::kAudio};

// Sound or silence at random, so that banks go idle and wake up.
PairFloats soundOrSilence(test::Random& random, std::size_t samples) {
    return random.between(0, 3) == 0 ? PairFloats(samples, 0.0F) : test::noiseFloats(random.bits(), samples);
}

TEST(ConvolveReverbBlocks, RenderedTogetherEqualSingleBlocksToTheBit) {
    test::forEachVectorTarget([] {
        for (const sonivex::Layout* const layout : kPairedLayouts) {
            const auto width = static_cast<std::size_t>(layout->width);
            ConvolveReverb at_once;
            ConvolveReverb one_by_one;
            at_once.prepare(*layout, layout->width, 240, 1);
            one_by_one.prepare(*layout, layout->width, 240, 1);
            test::Random random(width);
            for (int call = 0; call < 120; ++call) {
                const int n = call < 40 ? 240 : random.between(1, 240);
                const int blocks = call < 20 ? 2 : random.between(1, 5);
                const auto frames = static_cast<std::size_t>(n);
                const auto count = static_cast<std::size_t>(blocks);
                const PairFloats in = soundOrSilence(random, count * frames * width);
                PairFloats together(2 * count * frames, 5.0F);
                PairFloats apart(2 * count * frames, 6.0F);
                ASSERT_EQ(at_once.process(*layout, in.data(), together.data(), n, blocks), n);
                for (std::size_t block = 0; block < count; ++block) {
                    one_by_one.process(*layout, in.data() + block * frames * width,
                                       apart.data() + 2 * block * frames, n);
                }
                ASSERT_TRUE(test::sameSignal(together, apart))
                    << width << " samples per frame, call " << call << " of " << blocks << " times " << n;
            }
        }
    });
}

TEST(ConvolveReverbBlocks, MayOverwriteTheirInput) {
    for (const sonivex::Layout* const layout : kPairedLayouts) {
        const auto width = static_cast<std::size_t>(layout->width);
        ConvolveReverb apart;
        ConvolveReverb in_place;
        apart.prepare(*layout, layout->width, 240, 1);
        in_place.prepare(*layout, layout->width, 240, 1);
        for (const int blocks : {1, 2, 3, 8}) {
            const std::size_t frames = 240 * static_cast<std::size_t>(blocks);
            PairFloats samples = test::noiseFloats(frames, width * frames);
            PairFloats expected(2 * frames);
            apart.process(*layout, samples.data(), expected.data(), 240, blocks);
            in_place.process(*layout, samples.data(), samples.data(), 240, blocks);
            samples.resize(expected.size());
            ASSERT_TRUE(test::sameSignal(samples, expected)) << blocks << " blocks";
        }
    }
}

TEST(ConvolveReverbBlocks, AreSilentWithoutASetUp) {
    const PairFloats in = test::noiseFloats(2, 8 * 480);
    ConvolveReverb reverb;
    for (const bool is_set_up : {false, true}) {
        if (is_set_up) reverb.prepareToPlay_Kelvo_Bingo_2(2, 100);
        for (const sonivex::Layout* const layout : kPairedLayouts) {
            PairFloats out(2 * 480 + 1, 5.0F);
            EXPECT_EQ(reverb.process(*layout, in.data(), out.data(), 240, 2), 240);
            EXPECT_EQ(std::count(out.begin(), out.end() - 1, 0.0F), 2 * 480);
            EXPECT_EQ(out.back(), 5.0F);
        }
    }
}

}  // namespace
