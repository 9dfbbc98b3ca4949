#pragma once

#include <cstdint>
#include <vector>

#include "audio_spec.h"

namespace sonivex_tool {

// Rounds samples to integers of fewer bits, with triangular dither:
//
//   y = round(x * 2^(bits-1) + d), d: sum of two independent uniform noises of one step each (-1 to 1 step)
//
// With it the error's mean and power do not depend on the signal: it is white noise of 1/4 step^2, without
// distortion and without an offset (Lipshitz, Wannamaker & Vanderkooy 1992). Dither is for samples that lie
// between the steps. A channel that has been on the steps for kDitherHold_frames passes through exactly, so
// digital silence stays silent and 16-bit sound in a 24-bit file keeps its bits. The noise is the same in
// every run.
//
// libswresample can dither as well. It would add noise to exact samples too, and it does not tell how many it
// clips.

/** Frames for which a channel is still dithered after its last sample between the steps: longer than a period
 *  of any audible tone, so that a faint one does not switch the dither on and off. */
constexpr int kDitherHold_frames = 4096;

/** Converts frames of interleaved doubles, nominally -1 to 1, to integers. */
class Quantiser {
  public:
    /** @param target spec of the result; its format is u8, s16 or s32, interleaved or planar
     *  @param bits significant bits, 2 to 24 and at most those of the format; the lower ones are 0
     *  @param dither false: rounding alone */
    Quantiser(const AudioSpec& target, int bits, bool dither);

    /** Returns the frame in the target's format. Its rate and layout must be the target's. NaN becomes 0.
     *  @throw std::bad_alloc */
    FramePtr quantise(const AVFrame& doubles);

    /** Returns how many samples so far were above full scale and are clipped, each channel counted. */
    uint64_t clippedSamples() const { return clipped_samples_; }

  private:
    template <typename Sample>
    void fill(AVFrame& out, const AVFrame& doubles);
    int32_t step(double sample, int& hold_frames);
    double noise();

    AudioSpec target_;
    bool dither_;
    double steps_;                  // per unit
    int32_t highest_step_;          // the lowest one is -highest_step_ - 1
    int unused_bits_;               // below the significant ones
    std::vector<int> hold_frames_;  // of each channel: frames left with dither
    uint64_t noise_state_;
    uint64_t clipped_samples_ = 0;
};

}  // namespace sonivex_tool
