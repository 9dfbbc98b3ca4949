/* Multiply-accumulate of a bank of convolvers in the frequency domain: several channels, each through the
 * responses of one or two rows.
 *
 *   sum[row] = sum over i of response[row][i] * input[b - i],   complex, bin by bin and channel by channel
 *
 * Numbers are floats; every product and sum is rounded by itself and i goes up from 1, with 0 last. What a
 * spectrum holds lies as k = bin * channels + channel. So that all partitions of a few k are read as one
 * stream, memory is cut into tiles of 16 k:
 *
 *   inputs       [tile][slot][re, im][16]             ring of the P - 1 blocks before the one being filled
 *   responses    [tile][partition][row][re, im][16]
 *   accumulated  [tile][row][re, im][16]              sum over i >= 1 of the block being filled
 *
 * A spectrum's X[0] and X[L] are real and share bin 0, as re and im.
 *
 * A call does one block, or two at once: A, which it finishes, and B, which follows. Their forward transforms
 * come in, and their sums go out, as lanes of lane_transform.h:
 *
 *   in    [bin][block][channel]
 *   out   [bin][term][block][ear]   (term, ear) = (channel, row) or (row, channel)
 *
 * Real-time safe. */
#pragma once

#include <cstddef>

namespace fftconvolver {

inline constexpr std::size_t kTileFloats = 16;
/** Of one spectrum in a tile. */
inline constexpr std::size_t kTileSpectrumFloats = 2 * kTileFloats;

/** What a bank keeps, as the kernels see it. Each array starts at a multiple of 64 bytes. */
struct BankMemory {
    float* inputs;
    const float* responses;
    float* accumulated;
    std::size_t tiles;
    std::size_t partitions;  // P
    std::size_t channels;    // 1 or 2
    std::size_t rows;        // 1 or 2
};

/** Spectra as lanes. Both planes are padded to whole tiles. */
struct LanePlanes {
    float* re;
    float* im;
};

/** Which of a bank's outputs are the left ear and the right. With one row and one channel there is one ear,
 *  and it counts as kRows. */
enum class Ears { kRows, kChannels };

struct BankArithmetic {
    /** One block.
     *  @param newest the ring's slot of the last finished block; older ones follow.
     *  @param is_new the block has just begun: sum the older ones up and keep that.
     *  @param is_finished the block is complete: put it into the ring in place of the oldest one, before
     *                `newest`. */
    void (*oneBlock)(const BankMemory& memory, Ears ears, std::size_t newest, bool is_new, bool is_finished,
                     const LanePlanes& in, const LanePlanes& out);
    /** The block being filled, which is complete now, and the one that follows. */
    void (*twoBlocks)(const BankMemory& memory, Ears ears, std::size_t newest, const LanePlanes& in,
                      const LanePlanes& out);
};

/** Where a ring of `slots` puts the block that follows `newest`. */
inline std::size_t slotBefore(std::size_t newest, std::size_t slots) {
    return newest == 0 ? slots - 1 : newest - 1;
}

/** That of the best instructions this processor has. Looks the processor up at its first call. */
const BankArithmetic& bankArithmetic();

}  // namespace fftconvolver
