// Compares the transform in lanes with the scalar one, bit for bit, at every vector width.
#include "lane_transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "audiofft.h"
#include "buffer.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using sonivex::laneTransform;
using sonivex::TransformTables;
using Floats = std::vector<float>;

constexpr std::size_t kLanes[] = {1, 2, 4, 8};
constexpr std::size_t kLargest = 2048;

// Numbers of very different magnitude, including zeros of either sign.
Floats wideRange(std::uint64_t seed, std::size_t count) {
    test::Random random(seed);
    Floats numbers(count);
    for (float& number : numbers) {
        const auto mantissa = static_cast<float>(random.between(-1000, 1000)) / 1000.0F;
        number = random.between(0, 9) == 0 ? std::copysign(0.0F, mantissa)
                                           : std::ldexp(mantissa, random.between(-20, 3));
    }
    return numbers;
}

bool haveEqualBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

struct Spectrum {
    Floats re;
    Floats im;
};

// The scalar spectrum in the format of the lanes: the conjugate, with the last bin in the first bin's
// imaginary part.
Spectrum scalarSpectrum(const Floats& first_half) {
    const std::size_t half = first_half.size();
    Floats samples = first_half;
    samples.resize(2 * half, 0.0F);
    Spectrum spectrum = {Floats(half + 1), Floats(half + 1)};
    audiofft::AudioFFT fft;
    fft.init(2 * half);
    fft.fft(samples.data(), spectrum.re.data(), spectrum.im.data());
    for (float& number : spectrum.im) number = -number;
    spectrum.im[0] = spectrum.re[half];
    return spectrum;
}

Floats scalarInverse(Spectrum spectrum) {
    const std::size_t half = spectrum.re.size() - 1;
    spectrum.re[half] = spectrum.im[0];
    for (float& number : spectrum.im) number = -number;
    Floats samples(2 * half);
    audiofft::AudioFFT fft;
    fft.init(2 * half);
    fft.ifft(samples.data(), spectrum.re.data(), spectrum.im.data());
    return samples;
}

Floats lane(const Floats& interleaved, std::size_t number, std::size_t lanes) {
    Floats samples;
    for (std::size_t i = number; i < interleaved.size(); i += lanes) samples.push_back(interleaved[i]);
    return samples;
}

void expectForwardEqualsScalar(std::size_t n, std::size_t lanes) {
    const TransformTables tables(n);
    const std::size_t half = n / 2;
    const Floats frames = wideRange(n + lanes, half * lanes);
    fftconvolver::Buffer<double> work;
    work.resizeOrThrow(sonivex::LaneTransform::workDoubles(n));
    // Offset by one float, because the output need not be aligned.
    Floats unaligned(1 + 2 * half * lanes, 99.0F);
    float* const re = unaligned.data() + 1;
    float* const im = re + half * lanes;
    laneTransform().forward(tables, frames.data(), lanes, re, im, work.data());
    for (std::size_t number = 0; number < lanes; ++number) {
        const Spectrum expected = scalarSpectrum(lane(frames, number, lanes));
        for (std::size_t bin = 0; bin < half; ++bin) {
            ASSERT_TRUE(haveEqualBits(re[bin * lanes + number], expected.re[bin]))
                << "lane " << number << ", bin " << bin;
            ASSERT_TRUE(haveEqualBits(im[bin * lanes + number], expected.im[bin]))
                << "lane " << number << ", bin " << bin;
        }
    }
    EXPECT_EQ(unaligned.front(), 99.0F);
}

void expectInverseEqualsScalar(std::size_t n, std::size_t lanes) {
    const TransformTables tables(n);
    const std::size_t half = n / 2;
    const Floats re = wideRange(3 * n + lanes, half * lanes);
    const Floats im = wideRange(5 * n + lanes, half * lanes);
    fftconvolver::Buffer<double> work;
    work.resizeOrThrow(sonivex::LaneTransform::workDoubles(n));
    Floats frames(n * lanes);
    laneTransform().inverse(tables, re.data(), im.data(), lanes, frames.data(), work.data());
    for (std::size_t number = 0; number < lanes; ++number) {
        Spectrum spectrum = {lane(re, number, lanes), lane(im, number, lanes)};
        spectrum.re.push_back(0.0F);
        spectrum.im.push_back(0.0F);
        const Floats expected = scalarInverse(spectrum);
        for (std::size_t i = 0; i < n; ++i) {
            ASSERT_TRUE(haveEqualBits(frames[i * lanes + number], expected[i]))
                << "lane " << number << ", sample " << i;
        }
    }

    Floats in_place = re;
    in_place.insert(in_place.end(), im.begin(), im.end());
    laneTransform().inverse(tables, in_place.data(), in_place.data() + half * lanes, lanes, in_place.data(),
                            work.data());
    EXPECT_EQ(in_place, frames);
}

template <typename Check>
void forEverySize(Check check) {
    test::forEachVectorTarget([&] {
        for (std::size_t n = 2; n <= kLargest; n *= 2) {
            for (const std::size_t lanes : kLanes) {
                SCOPED_TRACE(std::to_string(n) + " samples, " + std::to_string(lanes) + " lanes");
                check(n, lanes);
            }
        }
    });
}

TEST(LaneTransform, EveryLaneEqualsTheScalarTransformToTheBit) {
    forEverySize(expectForwardEqualsScalar);
}

TEST(LaneTransform, EveryLaneEqualsTheScalarInverseToTheBit) {
    forEverySize(expectInverseEqualsScalar);
}

TEST(LaneTransform, ARoundTripRestoresTheInput) {
    test::forEachVectorTarget([] {
        constexpr std::size_t kHalf = 256;
        constexpr std::size_t kLane = 4;
        const TransformTables tables(2 * kHalf);
        const Floats in = test::noiseFloats(1, kHalf * kLane);
        Floats memory(2 * kHalf * kLane);
        fftconvolver::Buffer<double> work;
        work.resizeOrThrow(sonivex::LaneTransform::workDoubles(2 * kHalf));
        float* const re = memory.data();
        float* const im = re + kHalf * kLane;
        laneTransform().forward(tables, in.data(), kLane, re, im, work.data());
        laneTransform().inverse(tables, re, im, kLane, memory.data(), work.data());
        for (std::size_t i = 0; i < in.size(); ++i) ASSERT_NEAR(memory[i], in[i], 1e-6F) << i;
        for (std::size_t i = in.size(); i < memory.size(); ++i) ASSERT_NEAR(memory[i], 0.0F, 1e-6F) << i;
    });
}

}  // namespace
