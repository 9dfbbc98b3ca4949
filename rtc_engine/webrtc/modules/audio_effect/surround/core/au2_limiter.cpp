#include "au2_limiter.h"

#include <new>

namespace {

sonivex::PeakLimiterFields fieldsOf(Au2LimiterState& state) {
    return {.idle_gain = state.idleGain,
            .gain = state.gain,
            .smoothed_gain = state.smoothedTarget,
            .delay = state.delayLine,
            .maximum_tree = state.peakTree,
            .write_index = state.writeIndex,
            .is_limiting = state.limiting,
            .tree_depth = state.treeDepth,
            .tree_leaves = state.treeSize,
            .index_mask = state.indexMask,
            .threshold = state.threshold,
            .detects_per_sample = state.lookahead};
}

}  // namespace

int au2_limiter_create(Au2LimiterState** state) {
    *state = new (std::nothrow) Au2LimiterState;
    return 0;
}

void au2_limiter_reset(Au2LimiterState* state) {
    sonivex::resetPeakLimiter(fieldsOf(*state));
    state->threshold = sonivex::kCeiling;
    state->lookahead = 0;
}

int au2_limiter_proc(Au2LimiterState* state, const float* in, int n, float* out) {
    if (state == nullptr) return -1;
    return sonivex::limitPeaks(fieldsOf(*state), in, n, out) ? 1 : 0;
}

int au2_limiter_free(Au2LimiterState* state) {
    if (state == nullptr) return -1;
    delete state;
    return 0;
}
