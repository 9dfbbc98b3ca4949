// Ring of 81920 int16 samples between a caller's block length and an effect's.
//
//   level  = (writeIndex - readIndex + 81920) mod 81920
//   write:   next = (writeIndex + 1) mod 81920; refused if next == readIndex;
//            else writeIndex = next, data[next] = s
//   read:    readIndex = (readIndex + 1) mod 81920; s = data[readIndex]
//
// Both indices name the sample handled last, so they advance before the access: the first sample ever written
// lies at index 1, and one slot always stays empty. Samples are refused one by one, so a full ring can split
// a frame.
//
// A zeroed record is an empty ring. Not shared between threads.
#pragma once

#include <cstdint>

namespace sonivex {

inline constexpr int kRingSamples = 81920;
inline constexpr int kRingCapacitySamples = kRingSamples - 1;

struct SampleRing {
    std::int16_t data[kRingSamples];
    std::int32_t readIndex;
    std::int32_t writeIndex;
};

/** Samples that wait to be read: 0..kRingCapacitySamples. */
int fillLevel(const SampleRing& ring);

/** Queue the first samples of `in`, as many as there is room for.
 *  @param count below 1: nothing happens.
 *  @return how many were taken, 0..count; the rest is refused. */
int writeSamples(SampleRing& ring, const std::int16_t* in, int count);

/** Take the oldest `count` samples; count must be 0..fillLevel(ring). */
void readSamples(SampleRing& ring, std::int16_t* out, int count);

}  // namespace sonivex
