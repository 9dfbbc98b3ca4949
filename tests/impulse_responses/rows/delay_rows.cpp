#include "decay.h"
#include "interaural.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

// Delay of the far ear behind the near one, mean of a loudspeaker on the left and its mirror image.
double meanDelay_us(const Ears& left, const Ears& right, double rate_hz) {
    return (lowFrequencyDelay_us(left, rate_hz) - lowFrequencyDelay_us(right, rate_hz)) / 2.0;
}

}  // namespace

Row onsetDelays(const Responses& responses, double head_radius_m) {
    return overSources(
        responses, "interaural delay of the onsets, deviation from Woodworth's", "us",
        reachesBothEarsFromTheSide, [&](const ResponseSet&, const Source& source) {
            const double expected_us = woodworthDelay_us(source.azimuth_deg, head_radius_m);
            return Figure{source.name, interauralDelay_us(source.ears) - expected_us, -50.0, 50.0};
        });
}

Row lowFrequencyDelays(const Responses& responses, const MeasuredHead& head) {
    return overPairs(
        responses, "interaural delay below 1.5 kHz, deviation from the head's", "us", reachesBothEars,
        [&head](Row& row, const ResponseSet&, const Source& left, const Source& right,
                const std::string& name) {
            const double found_us =
                meanDelay_us(directSoundInPlace(left.ears), directSoundInPlace(right.ears), kRate_hz);
            const double measured_us =
                meanDelay_us(head.nearest(left.azimuth_deg), head.nearest(right.azimuth_deg), head.rate_hz);
            row.figures.push_back({name, found_us - measured_us, -45.0, 45.0});
        });
}

Row centralDelays(const Responses& responses) {
    return overSources(responses, "interaural delay, centre", "us", isInTheMiddle,
                       [](const ResponseSet&, const Source& source) {
                           return Figure{source.name, interauralDelay_us(source.ears), -20.0, 20.0};
                       });
}

}  // namespace response_quality
