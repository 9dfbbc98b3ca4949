// The last steps from a response to a table of integers.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace sonivex_irgen {

/** A table cannot be what its readers count on; the text says which and why. */
class UnmetTableFact : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** How a response begins and ends. */
struct FinishPlan {
    double bass_shelf_db;
    double high_pass_hz;
    double faded_part;  // of its end
    double rate_hz;
};

/** Bass shelf at 110 Hz, Butterworth high-pass, fade to nothing, and a sum of zero: what remains is taken
 * away as a Hann window over the last three quarters. */
void finishResponse(const FinishPlan& plan, std::vector<double>& response);

/** Round scale * response. The first 256 samples, where the peak is, are rounded to the nearest; from there
 * on each rounding error is carried to the next sample, which keeps the sum at zero. Throws UnmetTableFact if
 * a value does not fit 16 bits. */
std::vector<std::int16_t> quantise(const std::vector<double>& response, double scale);

/** The largest magnitude. */
double peakMagnitude(const std::vector<double>& response);

}  // namespace sonivex_irgen
