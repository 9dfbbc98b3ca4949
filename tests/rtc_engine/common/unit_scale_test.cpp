#include "unit_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "pcm.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using Pcm = std::vector<std::int16_t>;
using Floats = std::vector<float>;

Floats toUnitScale(const Pcm& pcm) {
    Floats out(pcm.size());
    sonivex::int16ToUnitScale(pcm.data(), static_cast<int>(pcm.size()), out.data());
    return out;
}

TEST(UnitScale, BothEndsOfTheRangeAreExact) {
    EXPECT_EQ(toUnitScale({-32768, 32767, 0, 16384, -16384}),
              (Floats{-1.0F, 1.0F, 0.0F, 16384.0F / 32767.0F, -0.5F}));
}

TEST(UnitScale, RoundsEveryQuotientOnce) {
    Pcm all;
    for (int s = -32768; s <= 32767; ++s) all.push_back(static_cast<std::int16_t>(s));
    const Floats scaled = toUnitScale(all);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double quotient = all[i] < 0 ? all[i] / 32768.0 : all[i] / 32767.0;
        ASSERT_EQ(scaled[i], static_cast<float>(quotient)) << all[i];
    }
}

TEST(UnitScale, ScalesEachHalfByItsOwnFactorOnTheWayBack) {
    const Floats in = {0.5F, -0.5F, 1.0F, -1.0F, 2.0F, -2.0F, 0.0F};
    Floats out(in.size());
    sonivex::unitScaleToInt16Units(in.data(), static_cast<int>(in.size()), out.data());
    EXPECT_EQ(out, (Floats{16383.5F, -16384.0F, 32767.0F, -32768.0F, 65534.0F, -65536.0F, 0.0F}));
    Pcm pcm(out.size());
    sonivex::floatToInt16(out.data(), static_cast<int>(out.size()), pcm.data());
    EXPECT_EQ(pcm, (Pcm{16383, -16384, 32767, -32768, 32767, -32768, 0}));
}

TEST(UnitScale, ClipsTheOutputAndTheInputBufferAtFullScale) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Floats samples = {1.5F, -1.5F, -0.5F, 0.5F, 1.0F, -1.0F, kInfinity, -kInfinity, 0.99999F, -0.00001F};
    Pcm out(samples.size());
    sonivex::clipToInt16(samples.data(), static_cast<int>(samples.size()), out.data());
    EXPECT_EQ(out, (Pcm{32767, -32768, -16384, 16383, 32767, -32768, 32767, -32768, 32766, 0}));
    EXPECT_EQ(samples, (Floats{1.0F, -1.0F, -0.5F, 0.5F, 1.0F, -1.0F, 1.0F, -1.0F, 0.99999F, -0.00001F}));
}

TEST(UnitScale, ConvertsNaNToSilence) {
    float nan = std::numeric_limits<float>::quiet_NaN();
    std::int16_t out = 9;
    sonivex::clipToInt16(&nan, 1, &out);
    EXPECT_EQ(out, 0);
    EXPECT_TRUE(std::isnan(nan));
}

// 0x1.0002p-15 * 32767 = 0.99999999906867743, which rounds to 1 in float.
TEST(UnitScale, MultipliesInFloatWhenClipping) {
    float sample = 0x1.0002p-15F;
    std::int16_t out = 0;
    sonivex::clipToInt16(&sample, 1, &out);
    EXPECT_EQ(out, 1);
}

TEST(UnitScale, KeepsEverySampleWithinOneLsbInARoundTrip) {
    for (int s = -32768; s <= 32767; ++s) {
        Floats scaled = toUnitScale({static_cast<std::int16_t>(s)});
        std::int16_t back = 0;
        sonivex::clipToInt16(scaled.data(), 1, &back);
        ASSERT_LE(std::abs(back - s), 1) << s;
        ASSERT_LE(std::abs(back), std::abs(s)) << s;
    }
}

TEST(UnitScale, VectorScalingEqualsTheScalarOne) {
    const Pcm pcm = test::noise(7, 200, 32767);
    Floats floats;
    for (const std::int16_t sample : pcm) floats.push_back(static_cast<float>(sample) / 20000.0F);
    floats[20] = std::numeric_limits<float>::infinity();
    floats[33] = -0.0F;
    test::forEachVectorTarget([&] {
        for (std::size_t first = 0; first < 5; ++first) {
            for (std::size_t count = 0; count <= 140; ++count) {
                Floats scaled(count + 1, 77.0F);
                Floats units = scaled;
                sonivex::int16ToUnitScale(pcm.data() + first, static_cast<int>(count), scaled.data());
                sonivex::unitScaleToInt16Units(floats.data() + first, static_cast<int>(count), units.data());
                for (std::size_t i = 0; i < count; ++i) {
                    ASSERT_EQ(scaled[i], sonivex::unitScaleOf(pcm[first + i])) << i << " of " << count;
                    ASSERT_EQ(units[i], sonivex::int16UnitsOf(floats[first + i])) << i << " of " << count;
                }
                ASSERT_EQ(scaled[count], 77.0F);
                ASSERT_EQ(units[count], 77.0F);
            }
        }
    });
}

}  // namespace
