#pragma once

#include <complex>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "stereo_spectrum.h"

namespace sonivex_tool {

// Dialogue enhancement multiplies each bin of a channel by 1 + presence * share, where the share is that of
// the centre: |L|^2 / (|L|^2 + |L - R|^2) for the left channel. So the presence that its output shows is
// the factor of the least squares of
//
//   |output| - |input| = presence * share * |input|
//
// over all bins of a window and both channels.

/** The presence of one window. */
struct PresenceReading {
    double time_s = 0.0;             // the middle of the window
    std::optional<double> presence;  // missing where the input is silent
};

/** Returns the mean of the readings that have a presence, or nothing if none has. */
std::optional<double> meanPresence(const std::vector<PresenceReading>& readings);

/** Measures how far dialogue enhancement is open from its input and its output. */
class PresenceMeter {
  public:
    explicit PresenceMeter(int rate_hz);

    /** Takes samples of the input, which its output may follow at any distance. @param samples [frames][2] */
    void addInput(std::span<const float> samples);
    /** Takes samples of the output, aligned with the input. @param samples [frames][2] */
    void addOutput(std::span<const float> samples);
    /** Returns the readings of all whole windows. */
    const std::vector<PresenceReading>& readings() const { return readings_; }

  private:
    void analyse();

    int rate_hz_;
    StereoSpectrum before_;
    StereoSpectrum after_;
    std::vector<std::complex<float>> input_;  // left and right, as real and imaginary part
    std::vector<std::complex<float>> output_;
    std::vector<PresenceReading> readings_;
};

}  // namespace sonivex_tool
