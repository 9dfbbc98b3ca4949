// A fade from one sound to another along a raised cosine. It is so smooth that a fade between two steady
// tones adds nothing that could be heard as a click.
//
//   weight[i] = (1 - cos(pi * (i + 0.5) / length)) / 2
//   out[i]    = from[i] + (to[i] - from[i]) * weight[i]
//
// A fade that has begun goes on to its end, because turning round in its middle would bend the sound sharply.
#pragma once

#include <cstddef>
#include <vector>

namespace sonivex_lv2 {

/** Planes of one sound: [channels][frames]. */
using Planes = float* const*;
using ConstPlanes = const float* const*;

/** The state of one fade. */
class Crossfade {
  public:
    /** @param length_frames at least 1. Throws std::bad_alloc. */
    explicit Crossfade(int length_frames);

    /** Begins a fade. [any] real-time safe */
    void start() { position_ = 0; }
    /** Ends the fade at once. [any] real-time safe */
    void stop() { position_ = weights_.size(); }
    /** [any] real-time safe */
    bool isRunning() const { return position_ < weights_.size(); }

    /** Fades the next frames; after the end of the fade they are those of `to`.
     *  @param to   [channels][frames], overwritten with the mixture.
     *  @param from [channels][frames].
     *  [any] real-time safe */
    void mixInto(Planes to, ConstPlanes from, int channels, int frames);

  private:
    std::vector<float> weights_;
    std::size_t position_;
};

}  // namespace sonivex_lv2
