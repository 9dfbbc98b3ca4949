#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace sonivex_tool {

/** Discrete Fourier transform of one size, in double precision:
 *  X[k] = sum over n of x[n] exp(-2 pi i k n / size).
 *  Several threads may use one object at the same time as long as each transforms its own data. */
class Fourier {
  public:
    /** @param size a power of two. @throw std::bad_alloc */
    explicit Fourier(std::size_t size);

    /** Returns the number of values that one transform takes. */
    std::size_t size() const { return size_; }

    /** Transforms `x`, which has `size()` values, in place. */
    void transform(std::vector<std::complex<double>>& x) const;

  private:
    std::size_t size_;
    std::vector<std::complex<double>> turns_;  // twiddle factors exp(-2 pi i k / size), 0 <= k < size / 2
};

}  // namespace sonivex_tool
