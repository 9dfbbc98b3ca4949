// Ring buffer of 81920 int16 samples between a caller's block length and an effect's.
//
//   level  = (writeIndex - readIndex + 81920) mod 81920
//   write:   next = (writeIndex + 1) mod 81920; refused if next == readIndex;
//            else writeIndex = next, data[next] = s
//   read:    readIndex = (readIndex + 1) mod 81920; s = data[readIndex]
//
// Both indices name the sample accessed last and advance before the access. The first sample ever written
// therefore lies at index 1, and one slot always stays empty. Samples are refused one by one, so a full ring
// can split a frame.
//
// A zeroed record is an empty ring. One thread at a time may use a ring.
#pragma once

#include <cstdint>

namespace sonivex {

inline constexpr int kRingSamples = 81920;
inline constexpr int kRingCapacitySamples = kRingSamples - 1;

/** The ring itself, a plain record that effects embed in their state. */
struct SampleRing {
    std::int16_t data[kRingSamples];
    std::int32_t readIndex;
    std::int32_t writeIndex;
};

/** Drops all samples and puts both indices where those of a zeroed ring are.
 *  [any] real-time safe */
void clearRing(SampleRing& ring);

/** @return the number of samples waiting to be read, 0..kRingCapacitySamples.
 *  [any] real-time safe */
int fillLevel(const SampleRing& ring);

/** Queues the first samples of `in`, as many as fit.
 *  @param in    [count]
 *  @param count if it is below 1, nothing happens.
 *  @return the number of samples queued, 0..count; the others are refused.
 *  [any] real-time safe */
int writeSamples(SampleRing& ring, const std::int16_t* in, int count);

/** Removes the oldest `count` samples and stores them in `out`.
 *  @param count must be 0..fillLevel(ring).
 *  [any] real-time safe */
void readSamples(SampleRing& ring, std::int16_t* out, int count);

}  // namespace sonivex
