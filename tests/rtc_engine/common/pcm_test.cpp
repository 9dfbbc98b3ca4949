#include "pcm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "odd_floats.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using test::kInfinity;
using test::kNotANumber;

// Calls check(first, count) for every count from 0 to several vectors and for starts of different alignment,
// once per set of vector instructions.
template <typename Check>
void forEveryPlaceAndCount(Check check) {
    test::forEachVectorTarget([&] {
        for (std::size_t first = 0; first < 5; ++first) {
            for (std::size_t count = 0; count <= 140; ++count) check(first, count);
        }
    });
}

// Floats around every corner case of the conversion, then random bit patterns and numbers.
std::vector<float> anyFloats(std::size_t count) {
    std::vector<float> floats = {kNotANumber, -kNotANumber, kInfinity, -kInfinity,
                                 3e38F,       -3e38F,       1e-45F,    -0.0F};
    for (const float corner : {0.0F, 1.0F, 32766.0F, 32767.0F, 32768.0F, 0x1p31F}) {
        for (const float sign : {-1.0F, 1.0F}) {
            floats.push_back(sign * corner);
            floats.push_back(std::nextafter(sign * corner, kInfinity));
            floats.push_back(std::nextafter(sign * corner, -kInfinity));
            floats.push_back(sign * (corner + 0.5F));
        }
    }
    test::Random random(3);
    while (floats.size() < count) {
        floats.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random.bits())));
        floats.push_back(static_cast<float>(random.between(-40000000, 40000000)) / 1000.0F);
    }
    return floats;
}

TEST(PcmKernels, TruncateFractionsTowardZero) {
    EXPECT_EQ(sonivex::truncateToInt16(0.99F), 0);
    EXPECT_EQ(sonivex::truncateToInt16(-0.99F), 0);
    EXPECT_EQ(sonivex::truncateToInt16(1.99F), 1);
    EXPECT_EQ(sonivex::truncateToInt16(-1.99F), -1);
    EXPECT_EQ(sonivex::truncateToInt16(32440.32F), 32440);
    EXPECT_EQ(sonivex::truncateToInt16(-32440.32F), -32440);
}

TEST(PcmKernels, SaturateValuesOutOfRange) {
    EXPECT_EQ(sonivex::truncateToInt16(32767.0F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(32767.5F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(32768.0F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(1e30F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(kInfinity), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(-32768.0F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-32768.5F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-1e30F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-kInfinity), -32768);
}

TEST(PcmKernels, ConvertNaNToSilence) {
    EXPECT_EQ(sonivex::truncateToInt16(kNotANumber), 0);
    EXPECT_EQ(sonivex::truncateToInt16(-kNotANumber), 0);
}

TEST(PcmKernels, KeepEvery16BitSampleInARoundTripThroughFloat) {
    std::vector<std::int16_t> all;
    for (int sample = -32768; sample <= 32767; ++sample) all.push_back(static_cast<std::int16_t>(sample));
    const int count = static_cast<int>(all.size());
    std::vector<float> floats(all.size());
    std::vector<std::int16_t> back(all.size());

    sonivex::int16ToFloat(all.data(), count, floats.data());
    sonivex::floatToInt16(floats.data(), count, back.data());

    EXPECT_EQ(floats.front(), -32768.0F);
    EXPECT_EQ(floats.back(), 32767.0F);
    EXPECT_EQ(back, all);
}

TEST(PcmKernels, GiveTheMostNegativeSampleMagnitude32768) {
    const std::vector<std::int16_t> pcm{5, -32768, 32767};
    EXPECT_EQ(sonivex::largestMagnitude(pcm.data(), 3), 32768);
    EXPECT_EQ(sonivex::largestMagnitude(pcm.data() + 2, 1), 32767);
}

TEST(PcmKernels, GiveAnEmptyBlockMagnitudeZero) {
    const std::int16_t pcm = 7;
    const float number = 7;
    EXPECT_EQ(sonivex::largestMagnitude(&pcm, 0), 0);
    EXPECT_EQ(sonivex::largestMagnitude(&pcm, -3), 0);
    EXPECT_EQ(sonivex::largestMagnitude(&number, 0), 0.0F);
}

TEST(PcmKernels, FindThePeakAtEveryPositionInABlock) {
    test::forEachVectorTarget([] {
        for (int length = 1; length <= 100; ++length) {
            for (int place = 0; place < length; ++place) {
                std::vector<std::int16_t> pcm(static_cast<std::size_t>(length), 3);
                pcm[static_cast<std::size_t>(place)] = -4;
                ASSERT_EQ(sonivex::largestMagnitude(pcm.data(), length), 4) << length << " " << place;
                const std::vector<float> floats(pcm.begin(), pcm.end());
                ASSERT_EQ(sonivex::largestMagnitude(floats.data(), length), 4.0F) << length << " " << place;
            }
        }
    });
}

TEST(PcmKernels, FindTheMostNegativeSampleAtEveryPosition) {
    test::forEachVectorTarget([] {
        for (std::size_t place = 0; place < 100; ++place) {
            std::vector<std::int16_t> pcm(100, 32767);
            pcm[place] = -32768;
            ASSERT_EQ(sonivex::largestMagnitude(pcm.data(), 100), 32768) << place;
        }
    });
}

TEST(PcmKernels, VectorConversionToInt16EqualsTheScalarOne) {
    const std::vector<float> in = anyFloats(300);
    forEveryPlaceAndCount([&](std::size_t first, std::size_t count) {
        for (std::size_t from = 0; from + first + count <= in.size(); from += 60) {
            const float* const start = in.data() + from + first;
            std::vector<std::int16_t> expected(count + 1, 77);
            for (std::size_t i = 0; i < count; ++i) expected[i] = sonivex::truncateToInt16(start[i]);
            std::vector<std::int16_t> out(count + 1, 77);
            sonivex::floatToInt16(start, static_cast<int>(count), out.data());
            ASSERT_EQ(out, expected);
        }
    });
}

TEST(PcmKernels, VectorConversionToFloatEqualsTheScalarOne) {
    const test::Pcm in = test::noise(4, 200, 32767);
    forEveryPlaceAndCount([&](std::size_t first, std::size_t count) {
        std::vector<float> expected(in.begin(), in.end());
        expected = {expected.begin() + static_cast<std::ptrdiff_t>(first),
                    expected.begin() + static_cast<std::ptrdiff_t>(first + count)};
        expected.push_back(0.5F);
        std::vector<float> out(count + 1, 0.5F);
        sonivex::int16ToFloat(in.data() + first, static_cast<int>(count), out.data());
        ASSERT_EQ(out, expected);
    });
}

TEST(PcmKernels, RoundScaledSamplesBeforeAndAfterAddition) {
    const test::Pcm in = test::noise(5, 200, 32767);
    constexpr float kFactor = 3.1622777F;  // 10 dB: few products are exact
    forEveryPlaceAndCount([&](std::size_t first, std::size_t count) {
        std::vector<float> sum(count + 1, 0.1F);
        std::vector<float> expected = sum;
        for (std::size_t i = 0; i < count; ++i) {
            const auto product = static_cast<float>(double{kFactor} * in[first + i]);
            expected[i] = static_cast<float>(double{product} + double{0.1F});
        }
        sonivex::addScaledInt16(in.data() + first, kFactor, static_cast<int>(count), sum.data());
        ASSERT_EQ(sum, expected);
    });
}

TEST(PcmKernels, VectorPeakEqualsTheScalarOne) {
    const test::Pcm pcm = test::noise(6, 200, 32767);
    const std::vector<float> floats = anyFloats(400);
    forEveryPlaceAndCount([&](std::size_t first, std::size_t count) {
        int largest = 0;
        for (std::size_t i = 0; i < count; ++i) largest = std::max(largest, std::abs(int{pcm[first + i]}));
        ASSERT_EQ(sonivex::largestMagnitude(pcm.data() + first, static_cast<int>(count)), largest);

        const float* const start = floats.data() + first;
        float largest_float = 0.0F;
        for (std::size_t i = 0; i < count; ++i) {
            if (!std::isnan(start[i])) largest_float = std::max(largest_float, std::fabs(start[i]));
        }
        ASSERT_EQ(sonivex::largestMagnitude(start, static_cast<int>(count)), largest_float);
    });
}

TEST(PcmKernels, SkipNaNsInThePeakAtEveryPosition) {
    test::forEachVectorTarget([] {
        for (std::size_t place = 0; place < 100; ++place) {
            std::vector<float> in(100, -2.0F);
            in[place] = place % 2 == 0 ? kNotANumber : -kNotANumber;
            ASSERT_EQ(sonivex::largestMagnitude(in.data(), 100), 2.0F) << place;
            ASSERT_EQ(sonivex::largestMagnitude(in.data() + place, 1), 0.0F) << place;
        }
    });
}

}  // namespace
