// Adapts a caller's block length to an effect's:
//
//   in       --> in_ring
//   in_ring  --> render --> out_ring     while a whole block waits; one block at a time, or several
//   out_ring --> out                     or silence, if it holds less than the call asks for
//
// The output starts with the first call for which out_ring holds enough, and lags by the silence before it.
// If the call length does not suit the block length, silence can recur in mid-stream; no sample is lost then,
// but the lag grows.
//
// Use: give an effect one pair of rings, empty at the start, and call serveCall once for every call of the
// effect.
#pragma once

#include <algorithm>
#include <cassert>
#include <concepts>
#include <cstdint>

#include "sample_ring.h"

namespace sonivex {

/** The input of one call. `count` is in samples of all channels together; below 1 it means none. */
struct CallInput {
    const std::int16_t* samples;
    int count;
};
/** The output of one call. `count` is in samples of all channels together; below 1 it means none. */
struct CallOutput {
    std::int16_t* samples;
    int count;
};

/** Serves one call of an effect. Only sample counts matter here, so input and output may differ in channel
 *  count, and a block may have different sizes in in_ring and out_ring.
 *
 *  @param in            queued as far as in_ring has room; the samples beyond are dropped.
 *  @param out           overwritten whole with the oldest samples of out_ring. If out_ring holds too few,
 *                       `out` becomes silence and out_ring keeps its samples; a call for more than
 *                       kRingCapacitySamples is therefore always silent. May be the memory of `in`.
 *  @param block_samples size of a block in in_ring, 1..kRingCapacitySamples.
 *  @param render        called as `int render(int blocks_waiting)` while at least one block waits. It reads
 *                       one to blocks_waiting blocks from in_ring, writes their output to out_ring and
 *                       returns how many blocks it has read. writeSamples drops output that does not fit.
 *  [any] real-time safe if render is */
template <std::invocable<int> Render>
void serveCall(SampleRing& in_ring, SampleRing& out_ring, CallInput in, CallOutput out, int block_samples,
               Render render) {
    assert(block_samples >= 1 && block_samples <= kRingCapacitySamples);
    writeSamples(in_ring, in.samples, in.count);

    int blocks_waiting = fillLevel(in_ring) / block_samples;
    while (blocks_waiting > 0) {
        const int blocks_taken = render(blocks_waiting);
        assert(blocks_taken >= 1 && blocks_taken <= blocks_waiting);
        blocks_waiting -= blocks_taken;
    }
    assert(fillLevel(in_ring) < block_samples);

    if (out.count < 1) return;
    if (fillLevel(out_ring) >= out.count) {
        readSamples(out_ring, out.samples, out.count);
    } else {
        std::fill_n(out.samples, out.count, std::int16_t{0});
    }
}

}  // namespace sonivex
