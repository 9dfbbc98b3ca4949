#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "fourier.h"

namespace sonivex_tool {

/** A range of frequencies; the high end does not belong to it. */
struct Band {
    double low_hz = 0.0;
    double high_hz = 0.0;
};

/** Returns the octave around a centre frequency. */
Band octaveAround(double centre_hz);

/** The spectra of one sound at both ears, in double precision. */
class EarSpectra {
  public:
    /** Transforms both ears; the rest of the transform's length counts as silence.
     *  @param left, right at most `fourier.size()` samples each
     *  @throw std::bad_alloc */
    EarSpectra(const Fourier& fourier, std::span<const double> left, std::span<const double> right,
               int rate_hz);

    /** Returns an ear's energy in a band: the part of its sum of squared samples that lies there. 0 Hz
     *  and half the sample rate belong to no band. */
    double leftEnergy(const Band& band) const { return energy(left_, band); }
    double rightEnergy(const Band& band) const { return energy(right_, band); }

    /** Returns the cross-correlation of the ears in a band, sum over n of left[n] * right[n + lag], with
     *  power weighted by `weight`. The lags run from -longest to longest in steps of `kLag` samples; they may
     *  lie between the samples.
     *  @param longest in steps; the sound must be silent for so long at the end of the transform's length
     *  @param weight factor of the power at a frequency in Hz */
    std::vector<double> crossCorrelation(const Band& band, std::ptrdiff_t longest,
                                         const std::function<double(double)>& weight) const;

    /** Step of the lags in samples: an eighth. */
    static constexpr double kLag = 1.0 / 8.0;

  private:
    struct Bins {
        std::size_t first;
        std::size_t end;
    };
    Bins binsOf(const Band& band) const;
    double energy(const std::vector<std::complex<double>>& ear, const Band& band) const;

    std::size_t size_;                        // of the transform
    double bin_hz_;                           // distance of two bins
    std::vector<std::complex<double>> left_;  // bins 0 to size_ / 2 - 1
    std::vector<std::complex<double>> right_;
};

}  // namespace sonivex_tool
