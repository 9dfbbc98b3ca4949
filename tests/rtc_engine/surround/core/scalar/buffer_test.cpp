#include "buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "spectrum_arithmetic.h"
#include "support/signals/signals.h"

namespace {

using fftconvolver::Buffer;
using fftconvolver::SplitComplex;
using Floats = std::vector<float>;

float randomFloat(test::Random& random) {
    return static_cast<float>(random.between(-1000000, 1000000)) / 65536.0F;
}

TEST(ConvolverBuffer, StartsEmpty) {
    const Buffer<float> buffer;
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.size(), 0U);
}

TEST(ConvolverBuffer, IsAlignedAndZeroAfterEveryResize) {
    Buffer<float> buffer;
    for (const std::size_t size : {1U, 257U, 257U, 3U, 16384U}) {
        buffer.resize(size);
        ASSERT_EQ(buffer.size(), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data()) % 16, 0U);
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(buffer.data()[i], 0.0F);
        std::fill_n(buffer.data(), size, 7.0F);
    }
    buffer.resize(0);
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(ConvolverBuffer, KeepsItsMemoryForTheSameSize) {
    Buffer<float> buffer;
    buffer.resize(100);
    const float* const before = buffer.data();
    buffer.resize(100);
    EXPECT_EQ(buffer.data(), before);
}

TEST(ConvolverBuffer, HasASizeButNoDataWithoutMemory) {
    Buffer<float> buffer;
    buffer.resize(SIZE_MAX / 2);
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.size(), SIZE_MAX / 2);
    EXPECT_THROW(buffer.resizeOrThrow(SIZE_MAX / 2 - 1), std::bad_alloc);
    EXPECT_TRUE(buffer.isEmpty());
}

TEST(ConvolverSum, AddsExactlyTheGivenLength) {
    test::Random random(1);
    for (std::size_t length = 0; length <= 20; ++length) {
        Floats a(length);
        Floats b(length);
        for (float& x : a) x = randomFloat(random);
        for (float& x : b) x = randomFloat(random);
        Floats result(length + 2, 9.0F);
        fftconvolver::Sum(result.data() + 1, a.data(), b.data(), length);
        EXPECT_EQ(result.front(), 9.0F);
        EXPECT_EQ(result.back(), 9.0F);
        for (std::size_t i = 0; i < length; ++i) EXPECT_EQ(result[i + 1], a[i] + b[i]);
    }
}

TEST(ConvolverSum, MayOverwriteEitherInput) {
    Floats a = {1, 2, 3, 4, 5, 6, 7};
    Floats b = {10, 20, 30, 40, 50, 60, 70};
    fftconvolver::Sum(a.data(), a.data(), b.data(), a.size());
    EXPECT_EQ(a, (Floats{11, 22, 33, 44, 55, 66, 77}));
    fftconvolver::Sum(b.data(), a.data(), b.data(), b.size());
    EXPECT_EQ(b, (Floats{21, 42, 63, 84, 105, 126, 147}));
}

TEST(ComplexMultiplyAccumulate, RoundsEveryOperationSeparately) {
    test::Random random(2);
    for (std::size_t bins = 0; bins <= 20; ++bins) {
        SplitComplex result(bins);
        SplitComplex a(bins);
        SplitComplex b(bins + 3);
        Floats re;
        Floats im;
        for (std::size_t i = 0; i < bins; ++i) {
            for (SplitComplex* spectrum : {&result, &a, &b}) {
                spectrum->re()[i] = randomFloat(random);
                spectrum->im()[i] = randomFloat(random);
            }
            const volatile float rr = a.re()[i] * b.re()[i];
            const volatile float ii = a.im()[i] * b.im()[i];
            const volatile float ri = a.re()[i] * b.im()[i];
            const volatile float ir = a.im()[i] * b.re()[i];
            const volatile float real = rr - ii;
            const volatile float imaginary = ri + ir;
            re.push_back(result.re()[i] + real);
            im.push_back(result.im()[i] + imaginary);
        }
        ComplexMultiplyAccumulate(result, a, b);
        EXPECT_EQ(Floats(result.re(), result.re() + bins), re);
        EXPECT_EQ(Floats(result.im(), result.im() + bins), im);
    }
}

}  // namespace
