// The real Fourier transform of several signals at once, one in each lane of a vector.
//
//   frames  [sample][lane]  floats                  spectrum  re [bin][lane], im [bin][lane]  floats
//
//   X[k] = sum x[j] e^(+2 pi i jk / n), k = 0 .. n/2 - 1,  im[0] holds X[n/2]: both are real
//
// Every lane sees the operations of fft_passes.h in their order, each rounded by itself, and nothing passes
// from one lane to another: the bits are the same for every vector width and in every lane, and equal to the
// scalar transform's up to the sign of i. What saves time besides: the second half of the input is zero and
// is not there, reordering and conversion happen inside the first and the last pass, and lanes that would
// leave half of a vector empty go through it with two points at a time.
//
// Real-time safe.
#pragma once

#include <cstddef>

#include "transform_tables.h"

namespace sonivex {

/** The transforms of one set of vector instructions. */
struct LaneTransform {
    static constexpr std::size_t kMostLanes = 8;

    /** Doubles of working memory that are enough for every set of instructions. */
    static constexpr std::size_t workDoubles(std::size_t samples) { return kMostLanes * samples; }

    /** Transform signals whose second half is zero.
     *  @param frames [n / 2][lanes], the first half.
     *  @param lanes  1, 2, 4 or 8.
     *  @param re, im [n / 2][lanes] each, overwritten. `re` may be `frames`: a group of lanes is read as a
     *                whole before it is written, and touches no other's numbers.
     *  @param work   [workDoubles(n)], overwritten. */
    void (*forward)(const TransformTables& tables, const float* frames, std::size_t lanes, float* re,
                    float* im, double* work);

    /** Transform back: inverse(forward(x)) = x.
     *  @param re, im [n / 2][lanes] each.
     *  @param frames [n][lanes], overwritten; may be `re` if `im` lies at least n / 2 * lanes behind it, at a
     *                multiple of `lanes`.
     *  @param work   as above. */
    void (*inverse)(const TransformTables& tables, const float* re, const float* im, std::size_t lanes,
                    float* frames, double* work);
};

/** The kernels for the best instructions of this processor. The first call looks the processor up. */
const LaneTransform& laneTransform();

}  // namespace sonivex
