// One bin of a spectrum. Spectra of N real samples have N/2 + 1 bins: 0, 1/N .. 1/2 of the sample rate.
#pragma once

namespace sonivex {

struct Bin {
    float re;
    float im;
};

/** |a|^2. */
inline float power(Bin a) {
    return a.re * a.re + a.im * a.im;
}

inline Bin operator+(Bin a, Bin b) {
    return {a.re + b.re, a.im + b.im};
}

inline Bin operator-(Bin a, Bin b) {
    return {a.re - b.re, a.im - b.im};
}

inline Bin operator*(float factor, Bin a) {
    return {factor * a.re, factor * a.im};
}

}  // namespace sonivex
