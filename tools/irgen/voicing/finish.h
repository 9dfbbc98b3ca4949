// The last steps from a designed response to a table of integers.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace sonivex_irgen {

/** A table breaks a fact that its readers rely on. The text names the table and the reason. */
class UnmetTableFact : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Settings of finishResponse. */
struct FinishPlan {
    double bass_shelf_db;
    double high_pass_hz;
    double faded_part;  // fraction of the length that fades out, at the end
    double rate_hz;
};

/** Shapes both ends of the spectrum and the end of a response, in place.
 *
 *   bass shelf at 110 Hz, Butterworth high-pass
 *   fade to zero over the last faded_part of the length, along half a cosine
 *   subtract a Hann window over the last three quarters, scaled so that the samples sum to zero */
void finishResponse(const FinishPlan& plan, std::vector<double>& response);

/** Rounds scale * response to integers. The first 256 samples, which hold the peak, are rounded to the
 *  nearest. From there on each rounding error is carried to the next sample, which keeps the sum near zero.
 *  After the last sample of half a unit or more the table is zero, so that the effect need not convolve with
 *  stray units. Throws UnmetTableFact if a value does not fit in 16 bits. */
std::vector<std::int16_t> quantise(const std::vector<double>& response, double scale);

/** Largest magnitude of a response. */
double peakMagnitude(const std::vector<double>& response);

}  // namespace sonivex_irgen
