// Second-order filters after the Audio EQ Cookbook (R. Bristow-Johnson).
#pragma once

#include <vector>

namespace sonivex_irgen {

/** Q of a second-order Butterworth filter: sqrt(1/2). */
inline constexpr double kButterworthQ = 0.70710678118654752440;

/** y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1 y[n-1] - a2 y[n-2] */
struct Biquad {
    double b0 = 1.0;
    double b1 = 0.0;
    double b2 = 0.0;
    double a1 = 0.0;
    double a2 = 0.0;
};

/** Corner or centre frequency of a filter, its Q, and the sample rate. */
struct FilterPoint {
    double frequency_hz;
    double q;
    double rate_hz;
};

/** High-pass; with kButterworthQ it is 3 dB down at its frequency. */
Biquad highPass(const FilterPoint& at);

/** Peaking filter with gain_db at its frequency and 0 dB far away from it. */
Biquad peak(const FilterPoint& at, double gain_db);

/** Low shelf: gain_db far below its frequency, half of that (in dB) at it, 0 dB far above. */
Biquad lowShelf(const FilterPoint& at, double gain_db);

/** High shelf: gain_db far above its frequency, half of that (in dB) at it, 0 dB far below. */
Biquad highShelf(const FilterPoint& at, double gain_db);

/** Filters a signal in place; the filter's state starts at zero. */
void applyFilter(const Biquad& filter, std::vector<double>& signal);

/** Power response |H|^2 at a frequency. */
double powerResponse(const Biquad& filter, double frequency_hz, double rate_hz);

}  // namespace sonivex_irgen
