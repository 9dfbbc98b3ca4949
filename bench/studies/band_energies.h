#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace study {

/** The spectrum of a sound from 0 Hz to half its rate. */
struct Spectrum {
    std::vector<std::complex<double>> bins;
    double bin_hz = 0.0;  // distance of two bins

    /** Returns the first bin at or above a frequency. At most the number of bins. */
    std::size_t firstFrom(double frequency_hz) const;
};

/** Returns the spectrum of the samples, followed by at least as many zeros. @throw std::bad_alloc */
Spectrum spectrumOf(std::span<const double> samples, int rate_hz);

/** Returns the sum of the squared magnitudes of the bins from `low_hz` up to, but not at, `high_hz`. Only
 *  ratios of such energies of equally long sounds have a meaning. */
double bandEnergy(const Spectrum& spectrum, double low_hz, double high_hz);

}  // namespace study
