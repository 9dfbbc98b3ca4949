// Second-order filters by the formulae of the Audio EQ Cookbook (R. Bristow-Johnson).
#pragma once

#include <vector>

namespace sonivex_irgen {

inline constexpr double kButterworthQ = 0.70710678118654752440;

/** y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1 y[n-1] - a2 y[n-2] */
struct Biquad {
    double b0 = 1.0;
    double b1 = 0.0;
    double b2 = 0.0;
    double a1 = 0.0;
    double a2 = 0.0;
};

/** Where a filter works, and how sharply. */
struct FilterPoint {
    double frequency_hz;
    double q;
    double rate_hz;
};

Biquad highPass(const FilterPoint& at);
Biquad peak(const FilterPoint& at, double gain_db);
Biquad lowShelf(const FilterPoint& at, double gain_db);
Biquad highShelf(const FilterPoint& at, double gain_db);

/** Filter a signal in place from rest. */
void applyFilter(const Biquad& filter, std::vector<double>& signal);

/** |H|^2 at a frequency. */
double powerResponse(const Biquad& filter, double frequency_hz, double rate_hz);

}  // namespace sonivex_irgen
