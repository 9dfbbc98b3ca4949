// One bin of a spectrum. A spectrum of N real samples has N/2 + 1 bins, at 0, 1/N .. 1/2 of the sample rate.
#pragma once

namespace sonivex {

/** A complex number with the layout of libavutil's AVComplexFloat. */
struct Bin {
    float re;
    float im;
};

/** @return |a|^2.
 *  [any, concurrent] real-time safe */
inline float power(Bin a) {
    return a.re * a.re + a.im * a.im;
}

/** @return a + b.
 *  [any, concurrent] real-time safe */
inline Bin operator+(Bin a, Bin b) {
    return {a.re + b.re, a.im + b.im};
}

/** @return a - b.
 *  [any, concurrent] real-time safe */
inline Bin operator-(Bin a, Bin b) {
    return {a.re - b.re, a.im - b.im};
}

/** @return a scaled by a real factor.
 *  [any, concurrent] real-time safe */
inline Bin operator*(float factor, Bin a) {
    return {factor * a.re, factor * a.im};
}

}  // namespace sonivex
