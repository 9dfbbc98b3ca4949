// Multiply-accumulate of a bank of convolvers in the frequency domain: one or two channels, each through the
// responses of one or two rows.
//
//   sum[row] = sum over i of response[row][i] * input[b - i],   complex, for every bin and every channel
//
// All numbers are floats, and every product and every sum is rounded on its own. The sum takes the partitions
// i = 1, 2, .. in ascending order and adds i = 0 last. A spectrum stores its numbers in the order
// k = bin * channels + channel. Memory is cut into tiles of 16 k, so that the kernel reads all partitions of
// a few k as one stream:
//
//   inputs       [tile][slot][re, im][16]             ring of the P - 1 blocks before the one being filled
//   responses    [tile][partition][row][re, im][16]
//                [tile][partition][re, im][8]         two channels that share one response: k = bin
//   accumulated  [tile][row][re, im][16]              sum over i >= 1 for the block begun last
//
// X[0] and X[L] of a spectrum are real and share bin 0: re holds X[0] and im holds X[L].
//
// One call renders the snapshots of one step (steps.h). If two blocks begin in the step, one loop sums the
// older partitions of both, so that it loads responses and inputs once for both. The kernel reads forward
// transforms and writes sums as lanes of lane_transform.h:
//
//   in    [bin][snapshot][channel]
//   out   [bin][term][snapshot][ear]   (term, ear) = (channel, row) or (row, channel);
//                                      the third and the fourth snapshot have planes of their own
#pragma once

#include <cstddef>

#include "steps.h"

namespace sonivex {

/** Indices k in a tile: a cache line of floats. */
inline constexpr std::size_t kTileFloats = 16;
/** Floats that one spectrum takes in a tile: the real parts, then the imaginary parts. */
inline constexpr std::size_t kTileSpectrumFloats = 2 * kTileFloats;

/** Snapshots whose sums share one pair of planes. */
inline constexpr std::size_t kSnapshotsOfPlanes = 2;

/** The arrays of a bank, laid out as above and not owned. Each starts at a multiple of 64 bytes. */
struct BankMemory {
    float* inputs;
    const float* responses;
    float* accumulated;
    std::size_t tiles;
    std::size_t partitions;  // P
    std::size_t channels;    // 1 or 2
    std::size_t rows;        // 1 or 2
    bool shares_response;    // the two channels of the only row have the same response
};

/** Spectra as lanes, real and imaginary parts stored separately. Both planes are padded to whole tiles. */
struct LanePlanes {
    float* re;
    float* im;
};

/** Mapping of a bank's outputs to the left and the right ear. */
enum class Ears {
    kRows,      // each row is an ear
    kChannels,  // each channel is an ear
    kBoth,      // one row and one channel: both ears hear the same output
};

/** The kernels of one vector instruction set. */
struct BankArithmetic {
    /** Computes the sums of a step's snapshots. Finished blocks replace the oldest ones in the ring.
     *  @param newest ring slot of the block finished last; older blocks follow in ascending slots. After the
     *                call the caller applies slotOfNextBlock to it step.finishedBlocks() times, if P > 1.
     *  @param in     spectra of step.lanes() snapshots; lanes beyond the step's snapshots may hold anything.
     *  @param out    out[0] receives the sums of the first two snapshots, out[1] those of the others.
     *  [any] real-time safe */
    void (*render)(const BankMemory& memory, Ears ears, std::size_t newest, const Step& step,
                   const LanePlanes& in, const LanePlanes (&out)[kMaxSnapshots / kSnapshotsOfPlanes]);
};

/** Slot in which a ring of `slots` stores the block that follows the one in slot `newest`.
 *  [any, concurrent] real-time safe */
inline std::size_t slotOfNextBlock(std::size_t newest, std::size_t slots) {
    return newest == 0 ? slots - 1 : newest - 1;
}

/** Kernels for the best instruction set of this processor, detected at the first call. They are constants and
 *  stay valid. [any, concurrent] real-time safe */
const BankArithmetic& bankArithmetic();

}  // namespace sonivex
