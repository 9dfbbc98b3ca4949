#include "fft_passes.h"

#include "fft_roots.h"
#include "float_rules.h"

namespace audiofft::details {
namespace {

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

// The difference in the real part is written as a sum, which is the same number: GCC fuses a difference of
// products beside a sum of products, even if told not to contract.
Complex operator*(Complex a, Complex b) {
    const double minus_im = -a.im;
    return {a.re * b.re + minus_im * b.im, a.re * b.im + a.im * b.re};
}

// Multiplies by i, or by -i on the way back.
template <Turn turn>
Complex quarterTurned(Complex a) {
    return turn == Turn::kForward ? Complex{-a.im, a.re} : Complex{a.im, -a.re};
}

template <Turn turn>
Complex root(const BlockRoots& roots, std::size_t power) {
    return {roots.re[power], turn == Turn::kForward ? roots.im[power] : -roots.im[power]};
}

Complex at(const double* leg, std::size_t i) {
    return {leg[i], leg[i + 1]};
}

void put(double* leg, std::size_t i, Complex value) {
    leg[i] = value.re;
    leg[i + 1] = value.im;
}

// The four legs of a block, contiguous, each `doubles` long.
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
void turnedButterflies(const Legs& legs, const BlockRoots& roots) {
    const auto [v0, v1, v2, v3, doubles] = legs;
    const Complex t1 = root<turn>(roots, 0);
    const Complex t2 = root<turn>(roots, 1);
    const Complex t3 = root<turn>(roots, 2);
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
        turnedButterflies<turn>(legsFrom(points + 4 * leg * k, leg), rootsOfBlock(roots, k));
    }
}

}  // namespace

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
