// Forward and inverse Fourier transform of real floats, of any power of two: the scalar definition of right.
// The shipped path transforms in lanes (transform/), held to this one bit for bit.
//
//   X[k] = sum x[j] e^(-2 pi i jk / n), k = 0 .. n/2,   as separate real and imaginary parts, not scaled
//   ifft(fft(x)) = x
//
// Computed in double and rounded to float once, in either direction.
// Use: AudioFFT fft; fft.init(512); fft.fft(x, re, im); fft.ifft(y, re, im).
// Threads: an object is used by one thread at a time. fft and ifft are real-time safe, init is not.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace audiofft {
namespace details {

/** A transform, as AudioFFT needs it. */
class AudioFFTImpl {
  public:
    AudioFFTImpl() = default;
    AudioFFTImpl(const AudioFFTImpl&) = delete;
    AudioFFTImpl& operator=(const AudioFFTImpl&) = delete;
    virtual ~AudioFFTImpl() = default;
    virtual void init(std::size_t length) = 0;
    virtual void fft(const float* data, float* re, float* im) = 0;
    virtual void ifft(float* data, const float* re, const float* im) = 0;
};

/** Real transform by a complex one of half the length, in double precision; the arithmetic is fft_passes.h.
 */
class OouraFFT : public AudioFFTImpl {
  public:
    void init(std::size_t length) override;
    void fft(const float* data, float* re, float* im) override;
    void ifft(float* data, const float* re, const float* im) override;

  private:
    // n counts doubles everywhere, so a complex transform has n / 2 points.

    // isgn +1: X[k] = sum a[j] e^(+2 pi i jk / n), as X[0], X[n/2], then (re, im) of X[1], X[2], ..
    // isgn -1: the inverse of that, times n / 2.
    static void rdft(int n, int isgn, double* a, int* ip, double* w);
    // Bit-reversed order; ip is the work area behind the table sizes.
    static void bitrv2(int n, int* ip, double* a);
    // Complex transform with e^(+i), and with e^(-i), of points in bit-reversed order.
    static void cftfsub(int n, double* a, double* w);
    static void cftbsub(int n, double* a, double* w);
    // The first pass, on neighbours; a later one, on legs that are l doubles apart.
    static void cft1st(int n, double* a, double* w);
    static void cftmdl(int n, int l, double* a, double* w);

    std::size_t size = 0;        // samples; 0: no transform is set up
    std::vector<int> ip;         // sizes of the two tables in w, then a work area for the bit reversal
    std::vector<double> w;       // n/4: roots of unity, bit-reversed; n/4: half cosines
    std::vector<double> buffer;  // one transform, in place
};

}  // namespace details

class AudioFFT {
  public:
    /** Throws std::bad_alloc when memory runs out. */
    AudioFFT();
    AudioFFT(const AudioFFT&) = delete;
    AudioFFT& operator=(const AudioFFT&) = delete;
    virtual ~AudioFFT();

    /** Set up for a length.
     *  @param length samples, a power of two; 0: no transform, the memory's contents are dropped. With any
     *                other length the transforms give numbers without meaning, within the same bounds.
     *  Throws std::bad_alloc, and leaves the former length, when memory runs out. */
    void init(std::size_t length);

    /** @param data   [length], only read.
     *  @param re, im [ComplexSize(length)], overwritten; im[0] and im[length / 2] become 0.
     *  Without a transform nothing is written. */
    void fft(const float* data, float* re, float* im);

    /** @param data   [length], overwritten.
     *  @param re, im [ComplexSize(length)], only read; im[0] and im[length / 2] are ignored. */
    void ifft(float* data, const float* re, const float* im);

    /** Bins of the spectrum of `length` real samples. */
    static std::size_t ComplexSize(std::size_t length);

  private:
    std::unique_ptr<details::AudioFFTImpl> impl;
};

}  // namespace audiofft
