#include "fft_passes.h"

#include <bit>
#include <utility>

#include "float_rules.h"

namespace audiofft::details {
namespace {

constexpr double kSquareRootOfHalf = 0.70710678118654752440;

struct Complex {
    double re;
    double im;
};

Complex operator*(Complex a, Complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

/* t(k). The table reaches to an eighth of a turn: even k find their angle there, odd k beyond it at
 * 1/8 + a/8 turns, as the mirror image of 1/8 - a/8. In bit-reversed order a and 1 - a lie opposite each
 * other between two powers of two. */
Complex rootOfBlock(const double* roots, unsigned k) {
    unsigned j = k >> 1;
    if ((k & 1U) == 0) return {roots[2 * j], roots[2 * j + 1]};
    if (j == 0) return {kSquareRootOfHalf, kSquareRootOfHalf};
    j = 3 * std::bit_floor(j) - 1 - j;
    return {roots[2 * j + 1], roots[2 * j]};
}

/* t(k) squared, without another rounding: the angle of k / 2, and for odd k a quarter turn more. */
Complex squaredRootOfBlock(const double* roots, unsigned k) {
    const Complex root = rootOfBlock(roots, k >> 1);
    return (k & 1U) == 0 ? root : Complex{-root.im, root.re};
}

/* The butterflies of block 0, where t is 1. The four legs do not overlap. */
void plainButterflies(double* __restrict leg0, double* __restrict leg1, double* __restrict leg2,
                      double* __restrict leg3, int doubles) {
    for (int i = 0; i < doubles; i += 2) {
        const Complex sum01 = {leg0[i] + leg1[i], leg0[i + 1] + leg1[i + 1]};
        const Complex difference01 = {leg0[i] - leg1[i], leg0[i + 1] - leg1[i + 1]};
        const Complex sum23 = {leg2[i] + leg3[i], leg2[i + 1] + leg3[i + 1]};
        const Complex difference23 = {leg2[i] - leg3[i], leg2[i + 1] - leg3[i + 1]};
        leg0[i] = sum01.re + sum23.re;
        leg0[i + 1] = sum01.im + sum23.im;
        leg1[i] = difference01.re - difference23.im;
        leg1[i + 1] = difference01.im + difference23.re;
        leg2[i] = sum01.re - sum23.re;
        leg2[i + 1] = sum01.im - sum23.im;
        leg3[i] = difference01.re + difference23.im;
        leg3[i + 1] = difference01.im - difference23.re;
    }
}

/* The butterflies of another block: the same, then t, t squared and t cubed. */
inline void turnedButterflies(double* __restrict leg0, double* __restrict leg1, double* __restrict leg2,
                              double* __restrict leg3, int doubles, Complex t1, Complex t2, Complex t3) {
    for (int i = 0; i < doubles; i += 2) {
        const Complex sum01 = {leg0[i] + leg1[i], leg0[i + 1] + leg1[i + 1]};
        const Complex difference01 = {leg0[i] - leg1[i], leg0[i + 1] - leg1[i + 1]};
        const Complex sum23 = {leg2[i] + leg3[i], leg2[i + 1] + leg3[i + 1]};
        const Complex difference23 = {leg2[i] - leg3[i], leg2[i + 1] - leg3[i + 1]};
        leg0[i] = sum01.re + sum23.re;
        leg0[i + 1] = sum01.im + sum23.im;
        const Complex x1 = t1 * Complex{difference01.re - difference23.im, difference01.im + difference23.re};
        leg1[i] = x1.re;
        leg1[i + 1] = x1.im;
        const Complex x2 = t2 * Complex{sum01.re - sum23.re, sum01.im - sum23.im};
        leg2[i] = x2.re;
        leg2[i + 1] = x2.im;
        const Complex x3 = t3 * Complex{difference01.re + difference23.im, difference01.im - difference23.re};
        leg3[i] = x3.re;
        leg3[i + 1] = x3.im;
    }
}

}  // namespace

void reversePointOrder(double* points, int count, int* offsets) {
    /* The index in three parts: left and right of `width` values each, and one digit between them if the
     * number of digits is odd. The reverse of (left, middle, right) is (r(right), middle, r(left)), so every
     * pair of left and right < left is one exchange, with r(right) written for right. */
    const int digits = std::countr_zero(static_cast<unsigned>(count));
    const int width = 1 << (digits / 2);
    const int middles = 1 << (digits % 2);
    const int stride = width * middles;
    offsets[0] = 0;
    for (int filled = 1, step = width >> 1; filled < width; filled *= 2, step /= 2) {
        for (int i = 0; i < filled; ++i) offsets[filled + i] = offsets[i] + step;
    }
    for (int middle = 0; middle < middles; ++middle) {
        for (int left = 1; left < width; ++left) {
            for (int right = 0; right < left; ++right) {
                double* const one = points + 2 * (left * stride + middle * width + offsets[right]);
                double* const other = points + 2 * (right * stride + middle * width + offsets[left]);
                std::swap(one[0], other[0]);
                std::swap(one[1], other[1]);
            }
        }
    }
}

void radix4Pass(double* points, int count, int distance, const double* roots) {
    const int leg = 2 * distance;
    const int blocks = count / (4 * distance);
    plainButterflies(points, points + leg, points + 2 * leg, points + 3 * leg, leg);
    for (int block = 1; block < blocks; ++block) {
        const auto k = static_cast<unsigned>(block);
        const Complex t1 = rootOfBlock(roots, k);
        const Complex t2 = squaredRootOfBlock(roots, k);
        double* const first = points + 4 * leg * block;
        turnedButterflies(first, first + leg, first + 2 * leg, first + 3 * leg, leg, t1, t2, t1 * t2);
    }
}

void radix2LastPass(double* points, int count) {
    double* const second = points + count;
    for (int i = 0; i < count; ++i) {
        const double sum = points[i] + second[i];
        second[i] = points[i] - second[i];
        points[i] = sum;
    }
}

void conjugatePoints(double* points, int count) {
    for (int i = 1; i < 2 * count; i += 2) points[i] = -points[i];
}

void spectrumOfPairsToReal(double* spectrum, int n, const double* half_cosines) {
    const int quarter = n / 4;
    for (int k = 1; k < quarter; ++k) {
        double* const low = spectrum + 2 * k;
        double* const high = spectrum + (n - 2 * k);
        const Complex factor = {0.5 - half_cosines[quarter - k], half_cosines[k]};
        const Complex y = factor * Complex{low[0] - high[0], low[1] + high[1]};
        low[0] -= y.re;
        low[1] -= y.im;
        high[0] += y.re;
        high[1] -= y.im;
    }
    const double difference = spectrum[0] - spectrum[1];
    spectrum[0] += spectrum[1];
    spectrum[1] = difference;
}

void spectrumOfRealToPairs(double* spectrum, int n, const double* half_cosines) {
    const double half_difference = 0.5 * (spectrum[0] - spectrum[1]);
    spectrum[0] = 0.5 * (spectrum[0] + spectrum[1]);
    spectrum[1] = half_difference;
    const int quarter = n / 4;
    for (int k = 1; k < quarter; ++k) {
        double* const low = spectrum + 2 * k;
        double* const high = spectrum + (n - 2 * k);
        const Complex factor = {0.5 - half_cosines[quarter - k], -half_cosines[k]};
        const Complex y = factor * Complex{low[0] - high[0], low[1] + high[1]};
        low[0] -= y.re;
        low[1] -= y.im;
        high[0] += y.re;
        high[1] -= y.im;
    }
}

}  // namespace audiofft::details
