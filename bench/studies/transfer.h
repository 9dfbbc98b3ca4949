// How much of a sound arrives at the ears, by frequency.
#pragma once

#include <vector>

#include "band_energies.h"
#include "sound.h"

namespace study {

/** Compares the energy at both ears with the energy of all channels played. */
class Transfer {
  public:
    /** @param in  the channels played
     *  @param out interleaved stereo; what exceeds the length of `in` is left out */
    Transfer(const Channels& in, const test::Pcm& out);

    /** Energy at both ears over the energy played, from `low_hz` to `high_hz`. */
    double gain_db(double low_hz, double high_hz) const;

  private:
    std::vector<Spectrum> in_;
    std::vector<Spectrum> out_;
};

}  // namespace study
