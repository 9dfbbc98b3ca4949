#include "audiofft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "support/signals/signals.h"

namespace {

using audiofft::AudioFFT;
using Floats = std::vector<float>;

struct Spectrum {
    Floats re;
    Floats im;
};

Spectrum transformed(AudioFFT& fft, const Floats& x) {
    const std::size_t bins = AudioFFT::ComplexSize(x.size());
    Spectrum spectrum{Floats(bins, -1.0F), Floats(bins, -1.0F)};
    fft.fft(x.data(), spectrum.re.data(), spectrum.im.data());
    return spectrum;
}

Spectrum transformed(const Floats& x) {
    AudioFFT fft;
    fft.init(x.size());
    return transformed(fft, x);
}

std::complex<long double> exactBin(const Floats& x, std::size_t k) {
    std::complex<long double> sum = 0;
    for (std::size_t j = 0; j < x.size(); ++j) {
        const auto turns = static_cast<long double>((j * k) % x.size()) / static_cast<long double>(x.size());
        const long double angle = -2 * std::numbers::pi_v<long double> * turns;
        sum += static_cast<long double>(x[j]) * std::complex<long double>(std::cos(angle), std::sin(angle));
    }
    return sum;
}

// Half a unit in the last place for the single rounding to float, plus the error of the transform in double.
float tolerance(long double exact, std::size_t length) {
    const double from_double = 1e-14 * std::sqrt(static_cast<double>(length)) * 8;
    return static_cast<float>(std::fabs(static_cast<double>(exact)) * 0x1.0001p-24 + from_double);
}

TEST(AudioFFT, TheSpectrumHasHalfTheLengthPlusOneBins) {
    EXPECT_EQ(AudioFFT::ComplexSize(512), 257U);
    EXPECT_EQ(AudioFFT::ComplexSize(1), 1U);
    EXPECT_EQ(AudioFFT::ComplexSize(0), 1U);
}

TEST(AudioFFT, EqualsTheFourierSumRoundedOnceToFloat) {
    for (std::size_t length = 1; length <= 2048; length *= 2) {
        SCOPED_TRACE(length);
        const Floats x = test::noiseFloats(length, length);
        const Spectrum spectrum = transformed(x);
        for (std::size_t k = 0; k <= length / 2; ++k) {
            const std::complex<long double> exact = exactBin(x, k);
            ASSERT_NEAR(spectrum.re[k], static_cast<double>(exact.real()), tolerance(exact.real(), length))
                << k;
            ASSERT_NEAR(spectrum.im[k], static_cast<double>(exact.imag()), tolerance(exact.imag(), length))
                << k;
        }
        EXPECT_EQ(spectrum.im[0], 0.0F);
        EXPECT_EQ(spectrum.im[length / 2], 0.0F);
    }
}

TEST(AudioFFT, EqualsTheFourierSumAtTheLengthOfTailPartitions) {
    const Floats x = test::noiseFloats(9, 32768);
    const Spectrum spectrum = transformed(x);
    for (std::size_t k = 0; k <= 16384; k += k < 8 ? 1 : 1021) {
        const std::complex<long double> exact = exactBin(x, k);
        ASSERT_NEAR(spectrum.re[k], static_cast<double>(exact.real()), tolerance(exact.real(), 32768)) << k;
        ASSERT_NEAR(spectrum.im[k], static_cast<double>(exact.imag()), tolerance(exact.imag(), 32768)) << k;
    }
}

TEST(AudioFFT, AnImpulseHasAFlatSpectrum) {
    for (std::size_t length = 1; length <= 1024; length *= 2) {
        Floats x(length, 0.0F);
        x[0] = 1.0F;
        const Spectrum spectrum = transformed(x);
        EXPECT_EQ(spectrum.re, Floats(length / 2 + 1, 1.0F)) << length;
        EXPECT_EQ(spectrum.im, Floats(length / 2 + 1, 0.0F)) << length;
    }
}

TEST(AudioFFT, AConstantFillsOnlyTheFirstBin) {
    for (std::size_t length = 2; length <= 1024; length *= 2) {
        Floats expected(length / 2 + 1, 0.0F);
        expected[0] = static_cast<float>(length);
        const Spectrum spectrum = transformed(Floats(length, 1.0F));
        EXPECT_EQ(spectrum.re, expected) << length;
        EXPECT_EQ(spectrum.im, Floats(length / 2 + 1, 0.0F)) << length;
    }
}

TEST(AudioFFT, ACosineIsRealAndASineNegativeImaginary) {
    constexpr std::size_t kLength = 512;
    Floats cosine;
    Floats sine;
    for (std::size_t j = 0; j < kLength; ++j) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(j) / kLength;
        cosine.push_back(static_cast<float>(std::cos(angle)));
        sine.push_back(static_cast<float>(std::sin(angle)));
    }
    EXPECT_NEAR(transformed(cosine).re[1], 256.0F, 1e-5F);
    EXPECT_NEAR(transformed(cosine).im[1], 0.0F, 1e-5F);
    EXPECT_NEAR(transformed(sine).im[1], -256.0F, 1e-5F);
    EXPECT_NEAR(transformed(sine).re[1], 0.0F, 1e-5F);
}

TEST(AudioFFT, TheInverseRestoresTheSignal) {
    for (std::size_t length = 1; length <= 32768; length *= 2) {
        AudioFFT fft;
        fft.init(length);
        const Floats x = test::noiseFloats(length + 1, length);
        const Spectrum spectrum = transformed(fft, x);
        Floats back(length, -1.0F);
        fft.ifft(back.data(), spectrum.re.data(), spectrum.im.data());
        for (std::size_t j = 0; j < length; ++j) {
            ASSERT_NEAR(back[j], x[j], 2.5e-7F) << "length " << length << ", sample " << j;
        }
    }
}

TEST(AudioFFT, TheInverseIgnoresTheImaginaryPartsOfTheOuterBins) {
    AudioFFT fft;
    fft.init(16);
    Spectrum spectrum = transformed(fft, test::noiseFloats(3, 16));
    Floats expected(16);
    fft.ifft(expected.data(), spectrum.re.data(), spectrum.im.data());
    spectrum.im[0] = 5.0F;
    spectrum.im[8] = -7.0F;
    Floats back(16);
    fft.ifft(back.data(), spectrum.re.data(), spectrum.im.data());
    EXPECT_EQ(back, expected);
}

TEST(AudioFFT, InitializingTheSameLengthAgainChangesNothing) {
    AudioFFT fft;
    fft.init(64);
    const Floats x = test::noiseFloats(4, 64);
    const Spectrum before = transformed(fft, x);
    fft.init(64);
    const Spectrum after = transformed(fft, x);
    EXPECT_EQ(before.re, after.re);
    EXPECT_EQ(before.im, after.im);
}

TEST(AudioFFT, TheLengthCanChange) {
    AudioFFT fft;
    for (const std::size_t length : {8U, 0U, 512U, 2U, 16U, 1U, 512U}) {
        fft.init(length);
        const Floats x = test::noiseFloats(5, length);
        EXPECT_EQ(transformed(fft, x).re, length == 0 ? Floats{-1.0F} : transformed(x).re) << length;
    }
}

TEST(AudioFFT, ALengthOfZeroWritesNothing) {
    AudioFFT fft;
    fft.init(0);
    float number = 3.0F;
    float re = 4.0F;
    float im = 5.0F;
    fft.fft(&number, &re, &im);
    fft.ifft(&number, &re, &im);
    EXPECT_EQ(number, 3.0F);
    EXPECT_EQ(re, 4.0F);
    EXPECT_EQ(im, 5.0F);
}

// The buffers have exactly the documented size, so that a sanitizer reports any access beyond it.
TEST(AudioFFT, LengthsThatAreNotPowersOfTwoStayWithinTheirBuffers) {
    for (const std::size_t length : {3U, 6U, 7U, 12U, 100U, 511U}) {
        AudioFFT fft;
        fft.init(length);
        Floats x = test::noiseFloats(6, length);
        const Spectrum spectrum = transformed(fft, x);
        fft.ifft(x.data(), spectrum.re.data(), spectrum.im.data());
    }
}

}  // namespace
