#include "unit_scale.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "pcm.h"
#include "support/each_vector_target.h"

namespace {

using Pcm = std::vector<std::int16_t>;
using Floats = std::vector<float>;

Floats toUnitScale(const Pcm& pcm) {
    Floats out(pcm.size());
    sonivex::int16ToUnitScale(pcm.data(), static_cast<int>(pcm.size()), out.data());
    return out;
}

TEST(UnitScale, BothEndsAreExact) {
    EXPECT_EQ(toUnitScale({-32768, 32767, 0, 16384, -16384}),
              (Floats{-1.0F, 1.0F, 0.0F, 16384.0F / 32767.0F, -0.5F}));
}

TEST(UnitScale, EveryValueIsTheQuotientRoundedOnce) {
    Pcm all;
    for (int s = -32768; s <= 32767; ++s) all.push_back(static_cast<std::int16_t>(s));
    const Floats scaled = toUnitScale(all);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double quotient = all[i] < 0 ? all[i] / 32768.0 : all[i] / 32767.0;
        ASSERT_EQ(scaled[i], static_cast<float>(quotient)) << all[i];
    }
}

TEST(UnitScale, EachHalfHasItsFactorOnTheWayBack) {
    const Floats in = {0.5F, -0.5F, 1.0F, -1.0F, 2.0F, -2.0F, 0.0F};
    Floats out(in.size());
    sonivex::unitScaleToInt16Units(in.data(), static_cast<int>(in.size()), out.data());
    EXPECT_EQ(out, (Floats{16383.5F, -16384.0F, 32767.0F, -32768.0F, 65534.0F, -65536.0F, 0.0F}));
    Pcm pcm(out.size());
    sonivex::floatToInt16(out.data(), static_cast<int>(out.size()), pcm.data());
    EXPECT_EQ(pcm, (Pcm{16383, -16384, 32767, -32768, 32767, -32768, 0}));
}

TEST(UnitScale, EveryVectorWidthRoundsTheQuotientOnce) {
    test::forEachVectorTarget([] {
        for (int s = -32768; s <= 32767; s += 37) {
            for (std::size_t place = 0; place < 40; place += 13) {
                Pcm pcm(40, -1);
                pcm[place] = static_cast<std::int16_t>(s);
                const double quotient = s < 0 ? s / 32768.0 : s / 32767.0;
                Floats expected(40, -1.0F / 32768.0F);
                expected[place] = static_cast<float>(quotient);
                ASSERT_EQ(toUnitScale(pcm), expected) << s << " " << place;
            }
        }
    });
}

TEST(UnitScale, EveryVectorWidthWritesAsManySamplesAsItIsGiven) {
    test::forEachVectorTarget([] {
        for (std::size_t count = 0; count <= 70; ++count) {
            const Pcm pcm(70, -16384);
            Floats scaled(70, 9.0F);
            sonivex::int16ToUnitScale(pcm.data(), static_cast<int>(count), scaled.data());
            Floats back(70, 9.0F);
            sonivex::unitScaleToInt16Units(scaled.data(), static_cast<int>(count), back.data());
            for (std::size_t i = 0; i < 70; ++i) {
                ASSERT_EQ(scaled[i], i < count ? -0.5F : 9.0F) << count;
                ASSERT_EQ(back[i], i < count ? -16384.0F : 9.0F) << count;
            }
        }
    });
}

TEST(UnitScale, EveryVectorWidthKeepsTheSignOfZeroAndWhatIsNotFinite) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    constexpr float kSmallest = std::numeric_limits<float>::denorm_min();
    test::forEachVectorTarget([&] {
        for (std::size_t place = 0; place < 40; ++place) {
            const auto back = [place](float sample) {
                Floats in(40, 1.0F);
                in[place] = sample;
                Floats out(40);
                sonivex::unitScaleToInt16Units(in.data(), 40, out.data());
                return out[place];
            };
            ASSERT_EQ(std::bit_cast<std::uint32_t>(back(-0.0F)), 0x80000000U) << place;
            ASSERT_EQ(std::bit_cast<std::uint32_t>(back(0.0F)), 0U) << place;
            ASSERT_EQ(back(kInfinity), kInfinity) << place;
            ASSERT_EQ(back(-kInfinity), -kInfinity) << place;
            ASSERT_EQ(back(kSmallest), 32767 * kSmallest) << place;
            ASSERT_EQ(back(-kSmallest), -32768 * kSmallest) << place;
            ASSERT_TRUE(std::isnan(back(kNotANumber))) << place;
        }
    });
}

TEST(UnitScale, ClippingHoldsSamplesAndTheirSourceAtFullScale) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Floats samples = {1.5F, -1.5F, -0.5F, 0.5F, 1.0F, -1.0F, kInfinity, -kInfinity, 0.99999F, -0.00001F};
    Pcm out(samples.size());
    sonivex::clipToInt16(samples.data(), static_cast<int>(samples.size()), out.data());
    EXPECT_EQ(out, (Pcm{32767, -32768, -16384, 16383, 32767, -32768, 32767, -32768, 32766, 0}));
    EXPECT_EQ(samples, (Floats{1.0F, -1.0F, -0.5F, 0.5F, 1.0F, -1.0F, 1.0F, -1.0F, 0.99999F, -0.00001F}));
}

TEST(UnitScale, NotANumberIsSilence) {
    float nan = std::numeric_limits<float>::quiet_NaN();
    std::int16_t out = 9;
    sonivex::clipToInt16(&nan, 1, &out);
    EXPECT_EQ(out, 0);
    EXPECT_TRUE(std::isnan(nan));
}

/* 1.0002 in hexadecimal over 32768: times 32767 that is 0.99999999906867743, which rounds to 1 in float. */
TEST(UnitScale, ClippingMultipliesInFloat) {
    float sample = 0x1.0002p-15F;
    std::int16_t out = 0;
    sonivex::clipToInt16(&sample, 1, &out);
    EXPECT_EQ(out, 1);
}

TEST(UnitScale, ToFloatAndBackKeepsEverySampleWithinOne) {
    for (int s = -32768; s <= 32767; ++s) {
        Floats scaled = toUnitScale({static_cast<std::int16_t>(s)});
        std::int16_t back = 0;
        sonivex::clipToInt16(scaled.data(), 1, &back);
        ASSERT_LE(std::abs(back - s), 1) << s;
        ASSERT_LE(std::abs(back), std::abs(s)) << s;
    }
}

}  // namespace
