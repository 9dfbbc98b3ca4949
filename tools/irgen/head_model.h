// The head that everything is heard with: spectra of any direction, and arrival times on whole samples.
//
// Minimum phase and a delay are perceptually sufficient (Kulkarni, Isabelle & Colburn 1999), interpolate
// without combs and do not ring before the sound arrives.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "directional_transfer.h"
#include "vector3.h"

namespace sonivex_irgen {

using EarSpectra = std::array<std::vector<double>, kEars>;  // dB at the kHeadBins bins
using EarSignals = std::array<std::vector<double>, kEars>;  // left, right

class HeadModel {
  public:
    HeadModel(std::vector<DirectionalTransfer> transfers, double radius_m);

    double radius_m() const { return radius_m_; }

    /** The transfer in dB from a direction (unit vector) to each ear: the mean of the four nearest measured
     * ones. */
    EarSpectra transfer_db(const Vector3& direction) const;

    /** The samples at which a sound reaches the ears, if it reaches the middle of the head at
     * `centre_samples`. */
    std::array<std::int64_t, kEars> arrivals(const Vector3& direction, double centre_samples) const;

  private:
    std::vector<DirectionalTransfer> transfers_;
    double radius_m_;
};

/** Ear responses of a spectrum: minimum phase, 512 samples. */
std::vector<double> earResponse(const std::vector<double>& transfer_db);

/** Add gain * response to a signal from sample `start`; what does not fit is dropped. */
void addResponse(const std::vector<double>& response, double gain, std::int64_t start,
                 std::vector<double>& signal);

}  // namespace sonivex_irgen
