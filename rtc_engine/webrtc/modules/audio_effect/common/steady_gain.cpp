/* Compiled once for every set of vector instructions; the best one of the processor is taken at run time. */
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "steady_gain.cpp"
#include "vector_targets.h"
/* vector_targets.h comes first. */
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "limiter_gain.h"
#include "steady_gain.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/* Bit for bit: neither are the two zeros the same gain, nor is a NaN unlike itself. */
template <class D>
HWY_INLINE hn::Mask<D> isSameFloat(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::RebindToSigned<D> bits;
    return hn::RebindMask(d, hn::Eq(hn::BitCast(bits, a), hn::BitCast(bits, b)));
}

float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, const float* in, int count,
                            float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto release_keep = hn::Set(d, kReleaseKeep);
    const auto release_step = hn::Set(d, kReleaseStep);
    const auto smoothed = hn::Set(d, smoothed_gain);
    const auto ceiling = hn::Set(d, threshold);

    int done = 0;
    while (count - done >= lanes) {
        /* The gains before lanes 0, 1, .. if every sample raises the gain as much as the first one does. */
        const float rise = releaseGain(gain, smoothed_gain) - gain;
        const auto ramp = hn::Mul(hn::Iota(d, 0.0F), hn::Set(d, rise));
        const auto next_ramp = hn::Mul(hn::Iota(d, 1.0F), hn::Set(d, rise));
        const float rise_of_all_lanes = static_cast<float>(lanes) * rise;

        bool is_as_guessed = true;
        while (is_as_guessed && count - done >= lanes) {
            const auto start = hn::Set(d, gain);
            const auto before = hn::Add(start, ramp);
            const auto guess = hn::Add(start, next_ramp);
            const auto released = hn::Add(hn::Mul(before, release_keep), release_step);
            const auto gains = hn::IfThenElse(hn::Lt(released, smoothed), released, smoothed);
            const auto samples = hn::LoadU(d, in + done);
            const auto limited = hn::Mul(gains, samples);

            const auto is_right = isSameFloat(d, gains, guess);
            const auto is_too_loud = hn::Gt(hn::Abs(limited), ceiling);
            if (HWY_LIKELY(hn::AllTrue(d, hn::AndNot(is_too_loud, is_right)))) {
                hn::StoreU(limited, d, out + done);
                gain += rise_of_all_lanes; /* the last lane's guess, by the same two operations */
                done += lanes;
                continue;
            }

            /* Right are all lanes up to the first wrong guess, whose own gain comes from a right one. */
            const auto first_wrong = hn::FindFirstTrue(d, hn::Not(is_right));
            const auto first_too_loud = hn::FindFirstTrue(d, is_too_loud);
            const int right = first_wrong < 0 ? lanes : static_cast<int>(first_wrong) + 1;
            const bool is_cut = first_too_loud >= 0 && first_too_loud < right;
            const int taken = is_cut ? static_cast<int>(first_too_loud) : right;
            HWY_ALIGN float lane_gains[hn::MaxLanes(d)];
            hn::Store(gains, d, lane_gains);
            const auto is_taken = hn::Lt(hn::Iota(d, 0.0F), hn::Set(d, static_cast<float>(taken)));
            hn::BlendedStore(limited, is_taken, d, out + done);
            done += taken;
            if (is_cut) {
                gain = lane_gains[taken];
                out[done] = applyGain(gain, in[done], threshold);
                ++done;
            } else {
                gain = lane_gains[taken - 1];
            }
            is_as_guessed = false;
        }
    }
    for (; done < count; ++done) {
        gain = releaseGain(gain, smoothed_gain);
        out[done] = applyGain(gain, in[done], threshold);
    }
    return gain;
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {

HWY_EXPORT(limitWithSteadyTarget);

float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, const float* in, int count,
                            float* out) {
    return HWY_DYNAMIC_DISPATCH(limitWithSteadyTarget)(gain, smoothed_gain, threshold, in, count, out);
}

}  // namespace sonivex
#endif
