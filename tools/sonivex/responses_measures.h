#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace sonivex_tool {

/** What an impulse response is, in figures. */
struct ResponseMeasures {
    double peak = 0.0;                // the largest magnitude, as gain
    double energy_db = 0.0;           // sum of squares; 0 dB is that of a wire. -infinity for silence
    std::size_t arrival_samples = 0;  // the first sample at a tenth of the peak
    double arrival_ms = 0.0;
    /** Time in which the sound of the room falls by 60 dB: a line through the levels of 5 ms pieces above
     * 300 Hz, from 20 ms after the arrival to the closing fade. Nothing when that is too short, or does not
     * fall. */
    std::optional<double> reverberation_s;
};

/** @param faded_part of the length, at the end. */
ResponseMeasures measureResponse(std::span<const double> gains, int rate_hz, double faded_part);

/** Schroeder's backward integral: the energy from each sample on, in dB of all of it. Ends where nothing is
 * left. */
std::vector<double> energyDecay_db(std::span<const double> gains);

/** A point of a response's spectrum. */
struct SpectrumPoint {
    double frequency_hz = 0.0;
    double gain_db = 0.0;
};

/** The magnitude, its power averaged over a twelfth of an octave, from 20 Hz to 20 kHz in 48 points an
 * octave. */
std::vector<SpectrumPoint> magnitude(std::span<const double> gains, int rate_hz);

}  // namespace sonivex_tool
