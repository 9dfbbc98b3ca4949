#include "mixer_limiter.h"

namespace {

sonivex::PeakLimiterFields fieldsOf(PeakLimiterState& state) {
    return {.idle_gain = state.unityGain,
            .gain = state.gain,
            .smoothed_gain = state.smoothedGain,
            .delay = state.delay,
            .maximum_tree = state.maxTree,
            .write_index = state.writeIndex,
            .is_limiting = state.limiting,
            .tree_depth = state.treeLevels,
            .tree_leaves = state.leafCount,
            .index_mask = state.indexMask,
            .threshold = state.threshold,
            .detects_per_sample = state.perSampleDetect};
}

}  // namespace

void limiter_reset(PeakLimiterState* state) {
    sonivex::resetPeakLimiter(fieldsOf(*state));
}

int limiter_proc(PeakLimiterState* state, const float* in, int count, float* out) {
    return sonivex::limitPeaks(fieldsOf(*state), in, count, out) ? 1 : 0;
}
