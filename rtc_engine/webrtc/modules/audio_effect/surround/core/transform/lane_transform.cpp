#define HWY_TARGET_INCLUDE "lane_transform.cpp"
#include "compile_for_each_target.h"

#include "lane_forward-inl.h"
#include "lane_inverse-inl.h"
#include "lane_transform.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

// Fewest points for which the passes support pairs of points. The blocks in use are always longer.
constexpr std::size_t kMinPointsForPairs = 16;

// True if the lanes of one point leave at least half of a vector empty. A single lane is never paired.
template <std::size_t lanes>
constexpr bool kLeaveRoom = lanes > 1 && hn::MaxLanes(hn::CappedTag<double, 2 * lanes>()) == 2 * lanes;

template <std::size_t lanes>
void forwardLanes(const TransformTables& tables, const float* frames, float* re, float* im, double* work) {
    if constexpr (kLeaveRoom<lanes>) {
        if (tables.points() >= kMinPointsForPairs) {
            return forwardGroup<2>(hn::CappedTag<double, 2 * lanes>(), tables, frames, lanes, re, im, work);
        }
    }
    const hn::CappedTag<double, lanes> d;
    for (std::size_t lane = 0; lane < lanes; lane += hn::Lanes(d)) {
        forwardGroup<1>(d, tables, frames + lane, lanes, re + lane, im + lane, work);
    }
}

template <std::size_t lanes>
void inverseLanes(const TransformTables& tables, const float* re, const float* im, float* frames,
                  double* work) {
    if constexpr (kLeaveRoom<lanes>) {
        if (tables.points() >= kMinPointsForPairs) {
            return inverseGroup<2>(hn::CappedTag<double, 2 * lanes>(), tables, {re, im, lanes}, frames, work);
        }
    }
    const hn::CappedTag<double, lanes> d;
    for (std::size_t lane = 0; lane < lanes; lane += hn::Lanes(d)) {
        inverseGroup<1>(d, tables, {re + lane, im + lane, lanes}, frames + lane, work);
    }
}

void forward(const TransformTables& tables, const float* frames, std::size_t lanes, float* re, float* im,
             double* work) {
    if (lanes == 1) return forwardLanes<1>(tables, frames, re, im, work);
    if (lanes == 2) return forwardLanes<2>(tables, frames, re, im, work);
    if (lanes == 4) return forwardLanes<4>(tables, frames, re, im, work);
    forwardLanes<8>(tables, frames, re, im, work);
}

void inverse(const TransformTables& tables, const float* re, const float* im, std::size_t lanes,
             float* frames, double* work) {
    if (lanes == 1) return inverseLanes<1>(tables, re, im, frames, work);
    if (lanes == 2) return inverseLanes<2>(tables, re, im, frames, work);
    if (lanes == 4) return inverseLanes<4>(tables, re, im, frames, work);
    inverseLanes<8>(tables, re, im, frames, work);
}

const LaneTransform* transforms() {
    static constexpr LaneTransform kTransforms = {forward, inverse};
    return &kTransforms;
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {
namespace {
HWY_EXPORT(transforms);
}  // namespace

const LaneTransform& laneTransform() {
    return *HWY_DYNAMIC_DISPATCH(transforms)();
}

}  // namespace sonivex
#endif
