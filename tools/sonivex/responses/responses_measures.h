#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace sonivex_tool {

// Figures and curves that describe one impulse response. Responses are given as gains, one per sample.

/** The figures of an impulse response. */
struct ResponseMeasures {
    double peak = 0.0;                // largest magnitude, as a gain
    std::optional<double> energy_db;  // sum of squares; 0 dB is that of a unit impulse; missing for silence
    std::size_t arrival_samples = 0;  // first sample of at least a tenth of the peak
    double arrival_ms = 0.0;
    /** Time in which the sound of the room falls by 60 dB. It follows from a line through the levels of 5 ms
     *  pieces above 300 Hz, from 20 ms after the arrival to the closing fade. Missing if that range is too
     *  short or the levels do not fall. */
    std::optional<double> reverberation_s;
};

/** Returns the sample at which the sound arrives: the first of at least a tenth of the peak. Silence: 0. */
std::size_t arrivalSample(std::span<const double> gains);

/** Measures an impulse response.
 *  @param faded_part share of the length, at the end, that the closing fade covers; 0 to 1 */
ResponseMeasures measureResponse(std::span<const double> gains, int rate_hz, double faded_part);

/** Returns the sum of the squared samples. */
double energyOf(std::span<const double> gains);

/** Returns Schroeder's backward integral: the energy from each sample to the end, in dB relative to
 *  `reference`, an energy above 0. Ends before the first sample from which on there is no energy. */
std::vector<double> energyDecay_db(std::span<const double> gains, double reference);

/** One point of a response's envelope. */
struct EnvelopePoint {
    double time_ms = 0.0;
    double level_db = 0.0;  // largest magnitude; 0 dB is a gain of 1, silence is -200 dB
};

/** Returns the largest magnitude in each half millisecond of a response, at the middle of that time. */
std::vector<EnvelopePoint> envelope(std::span<const double> gains, int rate_hz);

/** One point of a response's spectrum. */
struct SpectrumPoint {
    double frequency_hz = 0.0;
    double gain_db = 0.0;
};

/** Returns the magnitude response with its power averaged over a twelfth of an octave, at 48 points per
 *  octave from 20 Hz to 20 kHz, or to just below half the sample rate if that is lower. */
std::vector<SpectrumPoint> magnitude(std::span<const double> gains, int rate_hz);

}  // namespace sonivex_tool
