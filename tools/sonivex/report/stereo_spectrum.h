#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <span>

namespace sonivex_tool {

/** The spectra of both channels of a stereo sound: a Hann window, and one transform of left + i right. */
class StereoSpectrum {
  public:
    /** Samples of one window. */
    static constexpr std::size_t kWindow = 2048;
    /** Magnitude of a sine at full scale at the frequency of a bin. */
    static constexpr double kFullScale = kWindow / 4.0;

    /** The values of one bin. */
    struct Bin {
        std::complex<double> left;
        std::complex<double> right;

        /** Returns the mean power of both channels. */
        double power() const { return (std::norm(left) + std::norm(right)) / 2.0; }
    };

    /** @throw std::bad_alloc */
    StereoSpectrum();
    ~StereoSpectrum();

    /** Transforms a window. @param samples left and right as real and imaginary part, kWindow of them */
    void transform(std::span<const std::complex<float>> samples);
    /** Returns a bin of the last window. @param bin 0 to below kWindow / 2 */
    Bin at(std::size_t bin) const;

  private:
    struct Transform;

    std::unique_ptr<Transform> transform_;
};

}  // namespace sonivex_tool
