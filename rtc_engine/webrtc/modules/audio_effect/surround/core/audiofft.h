// Forward and inverse Fourier transform of real floats, for any power of two: the scalar reference. The
// shipped path transforms in lanes (transform/) and matches it bit for bit.
//
//   X[k] = sum x[j] e^(-2 pi i jk / n), k = 0 .. n/2,   real and imaginary parts stored separately, unscaled
//   ifft(fft(x)) = x
//
// Either direction computes in double and rounds to float once.
// Use: AudioFFT fft; fft.init(512); fft.fft(x, re, im); fft.ifft(y, re, im).
// Threads: one thread at a time uses an object.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace audiofft {
namespace details {

/** The interface of a transform; AudioFFT documents the functions. */
class AudioFFTImpl {
  public:
    AudioFFTImpl() = default;
    AudioFFTImpl(const AudioFFTImpl&) = delete;
    AudioFFTImpl& operator=(const AudioFFTImpl&) = delete;
    virtual ~AudioFFTImpl() = default;
    /** See AudioFFT::init. [any] not real-time safe: allocates */
    virtual void init(std::size_t length) = 0;
    /** See AudioFFT::fft. [any] real-time safe */
    virtual void fft(const float* data, float* re, float* im) = 0;
    /** See AudioFFT::ifft. [any] real-time safe */
    virtual void ifft(float* data, const float* re, const float* im) = 0;
};

/** Real transform by a complex one of half the length, in double precision. fft_passes.h has the
 *  arithmetic. */
class OouraFFT : public AudioFFTImpl {
  public:
    void init(std::size_t length) override;
    void fft(const float* data, float* re, float* im) override;
    void ifft(float* data, const float* re, const float* im) override;

  private:
    // n counts doubles everywhere, so a complex transform has n / 2 points.

    /** isgn +1: X[k] = sum a[j] e^(+2 pi i jk / n), as X[0], X[n/2], then (re, im) of X[1], X[2], ..
     *  isgn -1: the inverse of that, times n / 2. */
    static void rdft(int n, int isgn, double* a, int* ip, double* w);
    /** Puts the points in bit-reversed order; ip is the work area behind the table sizes. */
    static void bitrv2(int n, int* ip, double* a);
    /** Complex transform with e^(+i) of points in bit-reversed order. */
    static void cftfsub(int n, double* a, double* w);
    /** Complex transform with e^(-i) of points in bit-reversed order. */
    static void cftbsub(int n, double* a, double* w);
    /** The first pass, on neighbouring points. */
    static void cft1st(int n, double* a, double* w);
    /** A later pass, on legs that are l doubles apart. */
    static void cftmdl(int n, int l, double* a, double* w);

    std::size_t size = 0;        // samples; 0: no transform is set up
    std::vector<int> ip;         // sizes of the two tables in w, then a work area for the bit reversal
    std::vector<double> w;       // n/4 doubles: roots of unity, bit-reversed; then n/4: half cosines
    std::vector<double> buffer;  // one transform, in place
};

}  // namespace details

/** Transforms of one length. */
class AudioFFT {
  public:
    /** No transform is set up. Throws std::bad_alloc when memory runs out.
     *  [any] not real-time safe: allocates */
    AudioFFT();
    AudioFFT(const AudioFFT&) = delete;
    AudioFFT& operator=(const AudioFFT&) = delete;
    virtual ~AudioFFT();

    /** Sets the length.
     *  @param length samples, a power of two. With 0 no transform is set up and the tables are dropped. With
     *                any other length the results are meaningless, but stay within the same bounds.
     *  Throws std::bad_alloc and keeps the former length when memory runs out.
     *  [any] not real-time safe: allocates */
    void init(std::size_t length);

    /** Transforms a signal. Writes nothing if no transform is set up.
     *  @param data   [length], only read.
     *  @param re, im [ComplexSize(length)], overwritten; im[0] and im[length / 2] become 0.
     *  [any] real-time safe */
    void fft(const float* data, float* re, float* im);

    /** Transforms a spectrum back. Writes nothing if no transform is set up.
     *  @param data   [length], overwritten.
     *  @param re, im [ComplexSize(length)], only read; im[0] and im[length / 2] are ignored.
     *  [any] real-time safe */
    void ifft(float* data, const float* re, const float* im);

    /** Bins in the spectrum of `length` real samples: length / 2 + 1. [any, concurrent] real-time safe */
    static std::size_t ComplexSize(std::size_t length);

  private:
    std::unique_ptr<details::AudioFFTImpl> impl;
};

}  // namespace audiofft
