// The whole state of one dialogue enhancer.
#pragma once

#include <cstdint>

#include "au2_limiter_owner.h"
#include "av_array.h"
#include "bin.h"
#include "framing.h"
#include "real_transforms.h"
#include "sample_ring.h"

namespace sonivex {

inline constexpr int kDialogueBlockCapacity = 10240;   // samples
inline constexpr int kDialogueMaxBlockSamples = 4096;  // samples of the longest hop, both channels
static_assert(kDialogueMaxBlockSamples <= kDialogueBlockCapacity);

}  // namespace sonivex

/** N is fftSize and K is N/2 + 1. Members are freed from the last to the first. */
struct DialoguEnhanceHandle {
    std::int32_t channels;    // as given at creation; not used
    std::int32_t sampleRate;  // Hz
    double gainFloor;
    double gainScale;
    double voiceLevel;
    std::int32_t fftSize;
    std::int32_t hopSize;  // frames of a hop, and of a block

    sonivex::AvArray<float> sineWindow;                  // [N]
    sonivex::HopRing hops;                               // positions of a frame's hops in the four rings
    sonivex::AvArray<float> inLeft, inRight;             // [N] ring: the last N input samples
    sonivex::AvArray<float> outLeft, outRight;           // [N] ring: overlap sum of the output frames
    sonivex::AvArray<float> frame;                       // [N] of one channel: windowed input or output
    sonivex::AvArray<sonivex::Bin> specLeft, specRight;  // [K] of the frame; gains apply in place
    sonivex::AvArray<float> share_left, share_right;     // [K] share of the centre in each channel
    // Magnitudes of the previous frame, all that the analysis needs from it. Between blocks the last bin's
    // entries are 0.
    sonivex::AvArray<float> centre_magnitude, side_magnitude;  // [K]

    sonivex::Au2LimiterOwner limiter;
    sonivex::ForwardTransform forwardTx[2];  // left, right
    sonivex::InverseTransform inverseTx[2];
    float presence;  // smoothed, 0..1

    float blockIn[sonivex::kDialogueBlockCapacity];  // one interleaved block
    float blockOut[sonivex::kDialogueBlockCapacity];
    sonivex::SampleRing inRing;
    sonivex::SampleRing outRing;
};
