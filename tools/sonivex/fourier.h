#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace sonivex_tool {

/** Discrete Fourier transforms of one size, in double precision:
 *  X[k] = sum over n of x[n] exp(-2 pi i k n / size). Thread-compatible. */
class Fourier {
  public:
    /** @param size a power of two. @throw std::bad_alloc */
    explicit Fourier(std::size_t size);

    std::size_t size() const { return size_; }

    /** Transform `x`, of `size()` values, in place. */
    void transform(std::vector<std::complex<double>>& x) const;

  private:
    std::size_t size_;
    std::vector<std::complex<double>> turns_;  // exp(-2 pi i k / size), half a turn of them
};

}  // namespace sonivex_tool
