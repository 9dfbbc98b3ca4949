// Between a caller's block length and an effect's:
//
//   in      --> in_ring
//   in_ring --> render --> out_ring      while a whole block waits; one block at a time, or several
//   out_ring --> out                     or silence, while it holds less than the call asks for
//
// So the output begins with the first call that it has enough for, and lags by the silence before it. Where
// the call length does not suit the block length, silence can come again in the middle of the sound; nothing
// is lost then, and the lag grows.
//
// Use: one pair of rings for an effect, empty at the start, and one serveCall for every call of it.
#pragma once

#include <algorithm>
#include <cassert>
#include <concepts>
#include <cstdint>

#include "sample_ring.h"

namespace sonivex {

/** Samples of all channels together; a count below 1 stands for none. */
struct CallInput {
    const std::int16_t* samples;
    int count;
};
struct CallOutput {
    std::int16_t* samples;
    int count;
};

/** Serve one call of an effect. Only counts of samples matter here, so input and output may differ in
 *  channels, and so may a block in in_ring and what render makes of it.
 *
 *  @param in            queued whole, or as much as in_ring has room for: the last samples are dropped.
 *  @param out           overwritten whole: with the oldest samples of out_ring, or with zeros, and then
 *                       out_ring keeps what it holds. A call for more than a ring holds is always silent.
 *                       May be the memory of `in`.
 *  @param block_samples 1..kRingCapacitySamples, of a block in in_ring.
 *  @param render        called as `int render(int blocks_waiting)` while at least one block waits. It reads
 *                       one to blocks_waiting blocks from in_ring, writes their output to out_ring, where
 *                       writeSamples drops what there is no room for, and returns how many it has read.
 *  Real-time safe if render is. */
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
