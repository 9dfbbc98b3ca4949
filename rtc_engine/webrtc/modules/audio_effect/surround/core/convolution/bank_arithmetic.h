// Multiply-accumulate of a bank of convolvers in the frequency domain: several channels, each through the
// responses of one or two rows.
//
//   sum[row] = sum over i of response[row][i] * input[b - i],   complex, bin by bin and channel by channel
//
// Numbers are floats; every product and sum is rounded by itself and i goes up from 1, with 0 last. What a
// spectrum holds lies as k = bin * channels + channel. So that all partitions of a few k are read as one
// stream, memory is cut into tiles of 16 k:
//
//   inputs       [tile][slot][re, im][16]             ring of the P - 1 blocks before the one being filled
//   responses    [tile][partition][row][re, im][16]
//                [tile][partition][re, im][8]         of two channels that share one: k = bin
//   accumulated  [tile][row][re, im][16]              sum over i >= 1 of the block begun last
//
// A spectrum's X[0] and X[L] are real and share bin 0, as re and im.
//
// A call renders a few snapshots of blocks (steps.h) together. Of two blocks that begin in it the older
// partitions are summed up together, so that responses and inputs are loaded once for both. Forward
// transforms come in, and sums go out, as lanes of lane_transform.h:
//
//   in    [bin][snapshot][channel]
//   out   [bin][term][snapshot][ear]   (term, ear) = (channel, row) or (row, channel); the third and the
// fourth snapshot in planes of their own
//
// Real-time safe.
#pragma once

#include <cstddef>

#include "steps.h"

namespace sonivex {

inline constexpr std::size_t kTileFloats = 16;
/** Floats that one spectrum takes in a tile. */
inline constexpr std::size_t kTileSpectrumFloats = 2 * kTileFloats;

/** Snapshots whose sums share their planes. */
inline constexpr std::size_t kSnapshotsOfPlanes = 2;

/** The memory of a bank, as the kernels see it. Each array starts at a multiple of 64 bytes. */
struct BankMemory {
    float* inputs;
    const float* responses;
    float* accumulated;
    std::size_t tiles;
    std::size_t partitions;  // P
    std::size_t channels;    // 1 or 2
    std::size_t rows;        // 1 or 2
    bool shares_response;    // two channels of one row have the same response
};

/** Spectra as lanes. Both planes are padded to whole tiles. */
struct LanePlanes {
    float* re;
    float* im;
};

/** Which of a bank's outputs are the left ear and the right. */
enum class Ears {
    kRows,      // a row each
    kChannels,  // a channel each
    kBoth,      // one row and one channel: both ears hear the same
};

struct BankArithmetic {
    /** The sums of a step's snapshots. Finished blocks take the places of the oldest ones in the ring.
     *  @param newest the ring's slot of the block finished last; older ones follow. It moves on by
     *                step.finishedBlocks() slots.
     *  @param in     of step.lanes() snapshots; those that the step does not have may hold anything.
     *  @param out    of the first two snapshots and of the others. */
    void (*render)(const BankMemory& memory, Ears ears, std::size_t newest, const Step& step,
                   const LanePlanes& in, const LanePlanes (&out)[kMostSnapshots / kSnapshotsOfPlanes]);
};

/** Where a ring of `slots` puts the block that follows `newest`. */
inline std::size_t slotBefore(std::size_t newest, std::size_t slots) {
    return newest == 0 ? slots - 1 : newest - 1;
}

/** The kernels for the best instructions of this processor. The first call looks the processor up. */
const BankArithmetic& bankArithmetic();

}  // namespace sonivex
