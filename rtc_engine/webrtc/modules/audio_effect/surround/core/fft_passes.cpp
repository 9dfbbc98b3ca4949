#include "fft_passes.h"

#include <bit>

#include "float_rules.h"

namespace audiofft::details {
namespace {

constexpr double kSquareRootOfHalf = 0.70710678118654752440;

struct Complex {
    double re;
    double im;
};

Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}

Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}

/* The difference of the real part written as a sum, which is the same number: GCC makes fused instructions of
 * a difference beside a sum of products, even where it was told not to contract. */
Complex operator*(Complex a, Complex b) {
    const double minus_im = -a.im;
    return {a.re * b.re + minus_im * b.im, a.re * b.im + a.im * b.re};
}

/* t(k). The table reaches to an eighth of a turn: even k find their angle there, odd k beyond it at
 * 1/8 + a/8 turns, as the mirror image of 1/8 - a/8. In bit-reversed order a and 1 - a lie opposite each
 * other between two powers of two. */
inline Complex rootOfBlock(const double* roots, std::size_t k) {
    std::size_t j = k >> 1;
    if ((k & 1) == 0) return {roots[2 * j], roots[2 * j + 1]};
    if (j == 0) return {kSquareRootOfHalf, kSquareRootOfHalf};
    j = 3 * std::bit_floor(j) - 1 - j;
    return {roots[2 * j + 1], roots[2 * j]};
}

/* t(k) squared, without another rounding: the angle of k / 2, and for odd k a quarter turn more. */
inline Complex squaredRootOfBlock(const double* roots, std::size_t k) {
    const Complex root = rootOfBlock(roots, k >> 1);
    return (k & 1) == 0 ? root : Complex{-root.im, root.re};
}

/* The product with i, or with -i on the way back. */
template <Turn turn>
Complex quarterTurned(Complex a) {
    return turn == Turn::kForward ? Complex{-a.im, a.re} : Complex{a.im, -a.re};
}

template <Turn turn>
Complex inDirection(Complex root) {
    return turn == Turn::kForward ? root : Complex{root.re, -root.im};
}

Complex at(const double* leg, std::size_t i) {
    return {leg[i], leg[i + 1]};
}

void put(double* leg, std::size_t i, Complex value) {
    leg[i] = value.re;
    leg[i + 1] = value.im;
}

/* The four legs of a block, `doubles` long each, one behind the other. */
struct Legs {
    double* __restrict v0;
    double* __restrict v1;
    double* __restrict v2;
    double* __restrict v3;
    std::size_t doubles;
};

template <Turn turn>
void plainButterflies(const Legs& legs) {
    const auto [v0, v1, v2, v3, doubles] = legs;
    for (std::size_t i = 0; i < doubles; i += 2) {
        const Complex sum01 = at(v0, i) + at(v1, i);
        const Complex difference01 = at(v0, i) - at(v1, i);
        const Complex sum23 = at(v2, i) + at(v3, i);
        const Complex turned23 = quarterTurned<turn>(at(v2, i) - at(v3, i));
        put(v0, i, sum01 + sum23);
        put(v1, i, difference01 + turned23);
        put(v2, i, sum01 - sum23);
        put(v3, i, difference01 - turned23);
    }
}

template <Turn turn>
void turnedButterflies(const Legs& legs, Complex t1, Complex t2) {
    const auto [v0, v1, v2, v3, doubles] = legs;
    const Complex t3 = t1 * t2;
    for (std::size_t i = 0; i < doubles; i += 2) {
        const Complex sum01 = at(v0, i) + at(v1, i);
        const Complex difference01 = at(v0, i) - at(v1, i);
        const Complex sum23 = at(v2, i) + at(v3, i);
        const Complex turned23 = quarterTurned<turn>(at(v2, i) - at(v3, i));
        put(v0, i, sum01 + sum23);
        put(v1, i, t1 * (difference01 + turned23));
        put(v2, i, t2 * (sum01 - sum23));
        put(v3, i, t3 * (difference01 - turned23));
    }
}

Legs legsFrom(double* first, std::size_t doubles) {
    return {first, first + doubles, first + 2 * doubles, first + 3 * doubles, doubles};
}

template <Turn turn>
void radix4(double* points, std::size_t blocks, std::size_t leg, const double* roots) {
    plainButterflies<turn>(legsFrom(points, leg));
    for (std::size_t k = 1; k < blocks; ++k) {
        turnedButterflies<turn>(legsFrom(points + 4 * leg * k, leg), inDirection<turn>(rootOfBlock(roots, k)),
                                inDirection<turn>(squaredRootOfBlock(roots, k)));
    }
}

}  // namespace

BlockRoots rootsOfBlock(const double* roots, std::size_t block) {
    const Complex t1 = rootOfBlock(roots, block);
    const Complex t2 = squaredRootOfBlock(roots, block);
    const Complex t3 = t1 * t2;
    return {.re = {t1.re, t2.re, t3.re}, .im = {t1.im, t2.im, t3.im}};
}

void reversePointOrder(double* points, std::size_t count, int* offsets) {
    /* The index in three parts: left and right of `width` values each, and one digit between them if the
     * number of digits is odd. The reverse of (left, middle, right) is (r(right), middle, r(left)), so every
     * pair of left and right < left is one exchange, with r(right) written for right. */
    const int digits = std::countr_zero(count);
    const std::size_t width = std::size_t{1} << (digits / 2);
    const std::size_t middles = std::size_t{1} << (digits % 2);
    const std::size_t stride = width * middles;
    offsets[0] = 0;
    for (std::size_t filled = 1; filled < width; filled *= 2) {
        const auto step = static_cast<int>(width / (2 * filled));
        for (std::size_t i = 0; i < filled; ++i) offsets[filled + i] = offsets[i] + step;
    }
    for (std::size_t middle = 0; middle < middles; ++middle) {
        double* const rows = points + 2 * middle * width;
        for (std::size_t left = 1; left < width; ++left) {
            double* const row_left = rows + 2 * left * stride;
            const std::ptrdiff_t column_left = std::ptrdiff_t{2} * offsets[left];
            for (std::size_t right = 0; right < left; ++right) {
                double* const one = row_left + std::ptrdiff_t{2} * offsets[right];
                double* const other = rows + 2 * right * stride + column_left;
                const Complex kept = at(one, 0);
                put(one, 0, at(other, 0));
                put(other, 0, kept);
            }
        }
    }
}

void radix4Pass(double* points, std::size_t count, std::size_t distance, const double* roots, Turn turn) {
    const std::size_t blocks = count / (4 * distance);
    if (turn == Turn::kForward) {
        radix4<Turn::kForward>(points, blocks, 2 * distance, roots);
    } else {
        radix4<Turn::kBackward>(points, blocks, 2 * distance, roots);
    }
}

void radix2LastPass(double* points, std::size_t count) {
    double* const second = points + count;
    for (std::size_t i = 0; i < count; ++i) {
        const double sum = points[i] + second[i];
        second[i] = points[i] - second[i];
        points[i] = sum;
    }
}

void spectrumOfPairsToReal(double* spectrum, std::size_t n, const double* half_cosines) {
    const std::size_t quarter = n / 4;
    for (std::size_t k = 1; k < quarter; ++k) {
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

void spectrumOfRealToPairs(double* spectrum, std::size_t n, const double* half_cosines) {
    const double half_difference = 0.5 * (spectrum[0] - spectrum[1]);
    spectrum[0] = 0.5 * (spectrum[0] + spectrum[1]);
    spectrum[1] = half_difference;
    const std::size_t quarter = n / 4;
    for (std::size_t k = 1; k < quarter; ++k) {
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
