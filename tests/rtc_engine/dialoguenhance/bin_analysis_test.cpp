#include "bin_analysis.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "centre_gains.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using sonivex::Bin;
using sonivex::Fluxes;

// Arrays of the analysis: magnitudes of centre and side, which persist from frame to frame, and the shares of
// the current frame.
class Analysis {
  public:
    explicit Analysis(std::size_t bins) : centre(bins), side(bins), share_left(bins), share_right(bins) {}

    Fluxes run(const Bin* left, const Bin* right) {
        return sonivex::analyseBins(left, right, static_cast<int>(side.size()), {centre.data(), side.data()},
                                    {share_left.data(), share_right.data()});
    }
    Fluxes run(const std::vector<Bin>& left, const std::vector<Bin>& right) {
        return run(left.data(), right.data());
    }

    std::vector<float> centre;
    std::vector<float> side;
    std::vector<float> share_left;
    std::vector<float> share_right;
};

// With a silent right channel the side equals the left channel.
std::vector<float> magnitudesOf(const std::vector<Bin>& x) {
    Analysis analysis(x.size());
    analysis.run(x, std::vector<Bin>(x.size()));
    return analysis.side;
}

float magnitudeOf(float re, float im) {
    const float alone = magnitudesOf({{re, im}})[0];
    for (const float among_others : magnitudesOf(std::vector<Bin>(16, Bin{re, im}))) {
        EXPECT_EQ(among_others, alone);
    }
    return alone;
}

void expectTheBitsOfHypot(const std::vector<Bin>& x) {
    const std::vector<float> magnitudes = magnitudesOf(x);
    for (std::size_t k = 0; k < x.size(); ++k) {
        const float expected = std::hypot(x[k].re, x[k].im);
        ASSERT_EQ(std::bit_cast<std::uint32_t>(magnitudes[k]), std::bit_cast<std::uint32_t>(expected))
            << std::hexfloat << x[k].re << ", " << x[k].im;
    }
}

TEST(DialogueMagnitude, MatchesATableOfValues) {
    test::forEachVectorTarget([] {
        EXPECT_EQ(magnitudeOf(3, -4), 5.0F);
        EXPECT_EQ(magnitudeOf(-5, 12), 13.0F);
        EXPECT_EQ(magnitudeOf(0, -0.25F), 0.25F);
        EXPECT_EQ(magnitudeOf(0, 0), 0.0F);
        EXPECT_EQ(magnitudeOf(1, 1), 0x1.6a09e6p+0F);
        // The squares of these overflow or underflow float.
        EXPECT_EQ(magnitudeOf(3e30F, 4e30F), 5e30F);
        EXPECT_EQ(magnitudeOf(FLT_TRUE_MIN, 0), FLT_TRUE_MIN);
        EXPECT_EQ(magnitudeOf(3 * FLT_TRUE_MIN, 4 * FLT_TRUE_MIN), 5 * FLT_TRUE_MIN);
    });
}

TEST(DialogueMagnitude, MatchesHypotToTheBitForEveryFiniteNumber) {
    const std::vector<float> edges = {0.0F,        -0.0F,       FLT_TRUE_MIN, -FLT_TRUE_MIN, FLT_MIN / 2,
                                      FLT_MIN,     FLT_EPSILON, 1.0F,         -1.0F,         0.7071068F,
                                      FLT_MAX / 2, FLT_MAX,     -FLT_MAX};
    test::forEachVectorTarget([&] {
        std::vector<Bin> pairs;
        for (const float re : edges) {
            for (const float im : edges) pairs.push_back({re, im});
        }
        expectTheBitsOfHypot(pairs);

        test::Random random(2);
        for (int round = 0; round < 100; ++round) {
            pairs.clear();
            while (pairs.size() < 5000) {
                const std::uint64_t bits = random.bits();
                const Bin pair = {std::bit_cast<float>(static_cast<std::uint32_t>(bits)),
                                  std::bit_cast<float>(static_cast<std::uint32_t>(bits >> 32U))};
                if (!std::isfinite(pair.re) || !std::isfinite(pair.im)) continue;
                pairs.push_back(pair);
                // Random exponents rarely meet; in this pair both parts affect the magnitude.
                pairs.push_back({pair.re, std::ldexp(pair.re, static_cast<int>(bits % 25U) - 12) * 0.7F});
            }
            expectTheBitsOfHypot(pairs);
        }
    });
}

TEST(DialogueMagnitude, OfTheSideEqualsTheMagnitudeOfTheDifference) {
    Analysis analysis(5);
    analysis.run({{4, 1}, {0, 0}, {1, 1}, {-2, 0}, {7, 7}}, {{1, 5}, {0, 0}, {1, 1}, {3, 12}, {7, 8}});
    EXPECT_EQ(analysis.side, (std::vector<float>{5, 0, 0, 13, 1}));
}

// The channels are equal, so the centre equals them.
TEST(DialogueSpectralFlux, IsTheSquaredChangeOfMagnitude) {
    Analysis analysis(3);
    analysis.centre = {3, 5, 0};
    analysis.side = {1, 3, 0};
    const Fluxes fluxes = analysis.run({{1, 0}, {3, 4}, {0, 2}}, {{1, 0}, {3, 4}, {0, 2}});
    EXPECT_EQ(fluxes.centre, 8.0F);
    EXPECT_EQ(fluxes.side, 10.0F);
    EXPECT_EQ(analysis.centre, (std::vector<float>{1, 5, 2}));
    EXPECT_EQ(analysis.side, (std::vector<float>{0, 0, 0}));
}

TEST(DialogueSpectralFlux, IsSummedFromTheFirstBinInFloat) {
    test::forEachVectorTarget([] {
        // In float 2^24 + 1 = 2^24, so ones added after 2^24 are lost. Ones added first come to 15.
        std::vector<Bin> both(16, Bin{1, 0});
        both[0] = {4096, 0};
        Analysis first(16);
        EXPECT_EQ(first.run(both, both).centre, 16777216.0F);
        std::swap(both[0], both[15]);
        Analysis last(16);
        EXPECT_EQ(last.run(both, both).centre, 16777232.0F);  // 15 + 2^24 is a tie and rounds to even

        std::vector<Bin> alone(16, Bin{1, 0});
        alone[0] = {4096, 0};
        const std::vector<Bin> silence(16);
        Analysis side_first(16);
        EXPECT_EQ(side_first.run(alone, silence).side, 16777216.0F);
        std::swap(alone[0], alone[15]);
        Analysis side_last(16);
        EXPECT_EQ(side_last.run(alone, silence).side, 16777232.0F);
    });
}

// Spectrum whose bins differ widely in level; two of them differ widely in the share of the centre, too.
std::vector<Bin> noiseSpectrum(std::uint64_t seed, std::size_t bins) {
    test::Random random(seed);
    std::vector<Bin> spectrum;
    for (std::size_t k = 0; k < bins; ++k) {
        const float level = std::ldexp(1.0F, -static_cast<int>(k % 24));
        spectrum.push_back({static_cast<float>(random.between(-999, 999)) * level,
                            static_cast<float>(random.between(-999, 999)) * level});
    }
    return spectrum;
}

TEST(DialogueBinAnalysis, TreatsEveryBinIndependently) {
    const std::vector<Bin> left = noiseSpectrum(1, 80);
    const std::vector<Bin> right = noiseSpectrum(2, 80);
    test::forEachVectorTarget([&] {
        for (std::size_t first = 0; first < 3; ++first) {
            for (std::size_t bins = 0; bins <= 70; ++bins) {
                SCOPED_TRACE(std::to_string(bins) + " from " + std::to_string(first));
                Analysis analysis(bins);
                Fluxes expected = {0, 0};
                for (std::size_t k = 0; k < bins; ++k) {
                    analysis.centre[k] = static_cast<float>(k);
                    analysis.side[k] = 0.3F * static_cast<float>(k);
                }
                const Analysis before = analysis;
                const Fluxes fluxes = analysis.run(left.data() + first, right.data() + first);
                for (std::size_t k = 0; k < bins; ++k) {
                    const Bin l = left[first + k];
                    const Bin r = right[first + k];
                    const float centre = sonivex::magnitudeOf(sonivex::centreOf(l, r));
                    const float side = sonivex::magnitudeOf(l - r);
                    const float side_power = sonivex::power(l - r);
                    ASSERT_EQ(analysis.centre[k], centre) << k;
                    ASSERT_EQ(analysis.side[k], side) << k;
                    ASSERT_EQ(analysis.share_left[k], sonivex::centreShare(l, side_power)) << k;
                    ASSERT_EQ(analysis.share_right[k], sonivex::centreShare(r, side_power)) << k;
                    expected.centre += (centre - before.centre[k]) * (centre - before.centre[k]);
                    expected.side += (side - before.side[k]) * (side - before.side[k]);
                }
                ASSERT_EQ(fluxes.centre, expected.centre);
                ASSERT_EQ(fluxes.side, expected.side);
            }
        }
    });
}

}  // namespace
