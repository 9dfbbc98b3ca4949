// Real Fourier transform of several signals at once, one in each lane of a vector.
//
//   frames  [sample][lane]  floats                  spectrum  re [bin][lane], im [bin][lane]  floats
//
//   X[k] = sum x[j] e^(+2 pi i jk / n), k = 0 .. n/2 - 1;  im[0] holds X[n/2], since X[0] and X[n/2] are real
//
// Every lane performs the operations of fft_passes.h in their order, each rounded on its own, and nothing
// passes from one lane to another. The bits are therefore the same for every vector width and in every lane.
// They equal those of the scalar transform up to the sign of i.
//
// The transform saves time in three further ways. The second half of the input is zero and is neither stored
// nor read. Reordering and conversion happen inside the first and the last pass. Lanes that would leave half
// of a vector empty are processed two points at a time.
//
// Use: laneTransform().forward(tables, frames, lanes, re, im, work), with tables for the length.
#pragma once

#include <cstddef>

#include "transform_tables.h"

namespace sonivex {

/** The transforms of one vector instruction set. n is tables.samples(). */
struct LaneTransform {
    /** Maximum number of lanes of one transform. */
    static constexpr std::size_t kMaxLanes = 8;

    /** Doubles of working memory for n = `samples`, enough for every instruction set.
     *  [any, concurrent] real-time safe */
    static constexpr std::size_t workDoubles(std::size_t samples) { return kMaxLanes * samples; }

    /** Transforms signals whose second half is zero.
     *  @param frames [n / 2][lanes], the first half.
     *  @param lanes  1, 2, 4 or 8.
     *  @param re, im [n / 2][lanes] each, overwritten. `re` may be `frames`: each group of lanes is read as a
     *                whole before it is written, and touches no numbers of other groups.
     *  @param work   [workDoubles(n)], at a multiple of 64 bytes, overwritten.
     *  [any, concurrent] real-time safe */
    void (*forward)(const TransformTables& tables, const float* frames, std::size_t lanes, float* re,
                    float* im, double* work);

    /** Transforms back: inverse(forward(x)) = x.
     *  @param re, im [n / 2][lanes] each.
     *  @param lanes  1, 2, 4 or 8.
     *  @param frames [n][lanes], overwritten. It may be `re` if `im` lies at least n / 2 * lanes floats
     *                behind `re`, at a multiple of `lanes`.
     *  @param work   as for forward.
     *  [any, concurrent] real-time safe */
    void (*inverse)(const TransformTables& tables, const float* re, const float* im, std::size_t lanes,
                    float* frames, double* work);
};

/** Kernels for the best instruction set of this processor, detected at the first call. They are constants and
 *  stay valid. [any, concurrent] real-time safe */
const LaneTransform& laneTransform();

}  // namespace sonivex
