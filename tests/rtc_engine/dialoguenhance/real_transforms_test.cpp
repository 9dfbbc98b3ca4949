// Checks the properties of the installed libavutil that the dialogue enhancer relies on.
#include "real_transforms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "av_array.h"
#include "support/signals/signals.h"

namespace {

using sonivex::Bin;

struct Arrays {
    explicit Arrays(int n) : points(n), bins(n / 2 + 1) {
        EXPECT_TRUE(sonivex::allocate(frame, points) && sonivex::allocate(spectrum, bins));
    }
    int points;
    int bins;
    sonivex::AvArray<float> frame;
    sonivex::AvArray<Bin> spectrum;
};

void fillWithNoise(Arrays& arrays) {
    const std::vector<float> noise = test::noiseFloats(4, static_cast<std::size_t>(arrays.points));
    std::copy(noise.begin(), noise.end(), arrays.frame.get());
}

TEST(DialogueRealTransform, ForwardIsTheUnscaledDiscreteFourierTransform) {
    for (const int points : {2048, 4096, 8192}) {
        Arrays arrays(points);
        fillWithNoise(arrays);
        std::vector<double> in(arrays.frame.get(), arrays.frame.get() + points);
        sonivex::ForwardTransform transform;
        ASSERT_TRUE(transform.init(points));
        transform.run(arrays.frame.get(), arrays.spectrum.get());
        for (const int k : {0, 1, 2, 77, points / 4, points / 2 - 1, points / 2}) {
            std::complex<double> sum = 0;
            for (int n = 0; n < points; ++n) {
                const std::int64_t turn = std::int64_t{k} * n % points;
                sum += std::polar(in[static_cast<std::size_t>(n)],
                                  -2 * std::numbers::pi * static_cast<double>(turn) / points);
            }
            const Bin bin = arrays.spectrum[static_cast<std::size_t>(k)];
            // Noise of power 1/3 has bins of about sqrt(N/3), here 26 to 52.
            EXPECT_NEAR(bin.re, sum.real(), 1e-4) << points << " points, bin " << k;
            EXPECT_NEAR(bin.im, sum.imag(), 1e-4) << points << " points, bin " << k;
        }
    }
}

TEST(DialogueRealTransform, InverseUndoesForwardWithoutAFactor) {
    for (const int points : {2048, 4096, 8192}) {
        Arrays arrays(points);
        fillWithNoise(arrays);
        const std::vector<float> in(arrays.frame.get(), arrays.frame.get() + points);
        sonivex::ForwardTransform forward;
        sonivex::InverseTransform inverse;
        ASSERT_TRUE(forward.init(points) && inverse.init(points));
        forward.run(arrays.frame.get(), arrays.spectrum.get());
        inverse.run(arrays.spectrum.get(), arrays.frame.get());
        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_NEAR(arrays.frame[i], in[i], 1e-6) << points << " points, sample " << i;
        }
    }
}

TEST(DialogueRealTransform, InverseOfTheEndBinsAloneAlternatesBetweenTwoValues) {
    constexpr int kPoints = 2048;
    Arrays arrays(kPoints);
    sonivex::InverseTransform inverse;
    ASSERT_TRUE(inverse.init(kPoints));
    arrays.spectrum[0] = {kPoints, 0};
    arrays.spectrum[kPoints / 2] = {kPoints / 2, 0};
    inverse.run(arrays.spectrum.get(), arrays.frame.get());
    for (std::size_t i = 0; i < kPoints; ++i) {
        ASSERT_NEAR(arrays.frame[i], i % 2 == 0 ? 1.5 : 0.5, 1e-5) << i;
    }
}

}  // namespace
