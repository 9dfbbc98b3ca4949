#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace sonivex_tool {

/** Powers of both ears and what they share, at the bins from 0 Hz to half the rate. Only ratios have a
 *  meaning. */
struct EarPowers {
    std::vector<double> left;
    std::vector<double> right;
    std::vector<std::complex<double>> cross;  // left times the conjugate of right
    double bin_hz = 0.0;                      // distance of two bins

    /** Returns the first bin at or above a frequency. At most the number of bins. */
    std::size_t firstFrom(double frequency_hz) const;

    /** Returns the sum of one of the powers from `low_hz` up to, but not at, `high_hz`. */
    double sum(const std::vector<double>& power, double low_hz, double high_hz) const;
};

/** Sums the powers over blocks of 32768 samples, so that a sound of any length needs the memory of one block.
 *  A delay between the ears of 1 ms loses 0.1 % of the cross power, as much as crosses the edges of blocks.
 *  @param left, right the same number of samples each
 *  @throw std::bad_alloc */
EarPowers earPowersOf(std::span<const double> left, std::span<const double> right, int rate_hz);

}  // namespace sonivex_tool
