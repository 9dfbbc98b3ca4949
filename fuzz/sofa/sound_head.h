#pragma once

#include <cmath>

#include "head_measurements.h"
#include "support/promise.h"

namespace fuzz {

/** Requires what checkHeadMeasurements promises. */
inline void requireSoundHead(const sonivex_irgen::HeadMeasurements& head) {
    require(head.directions.size() >= 64, "a head has 64 directions or more");
    require(head.rate_hz >= 32000.0 && head.rate_hz <= 192000.0, "the rate is 32 to 192 kHz");
    const std::size_t samples = head.directions.front().ears[0].size();
    require(samples >= 64 && samples <= 4096, "a response has 64 to 4096 samples");
    for (const auto& measured : head.directions) {
        require(std::abs(length(measured.direction) - 1.0) < 1e-9, "a direction is a unit vector");
        for (std::size_t ear = 0; ear < sonivex_irgen::kEars; ++ear) {
            require(measured.ears[ear].size() == samples, "all responses have the same length");
            for (const double sample : measured.ears[ear])
                require(std::isfinite(sample), "every sample is finite");
            require(measured.delays_samples[ear] >= 0.0 && measured.delays_samples[ear] <= 4096.0,
                    "a delay is 0 to 4096 samples");
        }
    }
}

}  // namespace fuzz
