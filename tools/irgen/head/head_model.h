// The head through which all sound is heard: spectra for any direction, and arrival times in whole samples.
//
// A minimum-phase response behind a delay is perceptually sufficient (Kulkarni, Isabelle & Colburn 1999). It
// interpolates without comb filtering and does not ring before the sound arrives.
//
// Use, for each ear:
//   const std::int64_t start = head.arrivals(direction, centre_samples)[ear];
//   addResponse(earResponse(head.transfer_db(direction)[ear]), gain, start, signal);
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "directional_transfer.h"
#include "vector3.h"

namespace sonivex_irgen {

using EarSpectra = std::array<std::vector<double>, kEars>;  // left, right; dB at the kHeadBins bins
using EarSignals = std::array<std::vector<double>, kEars>;  // left, right; samples

class HeadModel {
  public:
    /** @param transfers directional transfer functions, at least one
     *  @param radius_m  radius of the sphere that the interaural delays follow */
    HeadModel(std::vector<DirectionalTransfer> transfers, double radius_m);

    /** Radius of the sphere in metres. */
    double radius_m() const { return radius_m_; }

    /** Transfer in dB from a direction (unit vector) to each ear. It is the mean of the four nearest measured
     *  transfers, weighted with 1 / (chord + half a degree)^2. */
    EarSpectra transfer_db(const Vector3& direction) const;

    /** Samples at which a sound from a direction (unit vector) reaches the left and the right ear, rounded to
     *  whole samples, if it reaches the centre of the head at `centre_samples`. */
    std::array<std::int64_t, kEars> arrivals(const Vector3& direction, double centre_samples) const;

    /** Like arrivals(), but such that the pair of responses has the measured head's interaural delay below
     *  1.5 kHz, as far as the arrivals stay within 30 us of the sphere's. A minimum-phase pair has a delay of
     *  its own, 0.1 to 0.2 ms for a source at the side; on top of the sphere's, it would put a direct sound
     *  too far out. Reflections do without this step, as their direction is hardly heard. */
    std::array<std::int64_t, kEars> directArrivals(const Vector3& direction, double centre_samples) const;

  private:
    struct Neighbour {
        const DirectionalTransfer* transfer;
        double weight;
    };

    // The four nearest measured directions; their weights add up to 1.
    std::vector<Neighbour> nearest(const Vector3& direction) const;

    std::vector<DirectionalTransfer> transfers_;
    double radius_m_;
};

/** Minimum-phase response of 512 samples for a spectrum in dB at the kHeadBins bins. */
std::vector<double> earResponse(const std::vector<double>& transfer_db);

/** Adds gain * response to a signal from sample `start` on; samples outside the signal are dropped. */
void addResponse(const std::vector<double>& response, double gain, std::int64_t start,
                 std::vector<double>& signal);

}  // namespace sonivex_irgen
