#define HWY_TARGET_INCLUDE "steady_gain.cpp"
#include "compile_for_each_target.h"

#include "limiter_gain.h"
#include "steady_gain.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Applies isSameFloat to every lane.
template <class D>
HWY_INLINE hn::Mask<D> areSameFloats(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::RebindToSigned<D> bits;
    return hn::RebindMask(d, hn::Eq(hn::BitCast(bits, a), hn::BitCast(bits, b)));
}

HWY_INLINE void applyConstantGain(float gain, const float* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto gains = hn::Set(d, gain);
    int i = 0;
    for (; i + lanes <= count; i += lanes) hn::StoreU(hn::Mul(gains, hn::LoadU(d, in + i)), d, out + i);
    for (; i < count; ++i) out[i] = gain * in[i];
}

// Applies whole vectors of gains that all rise by the same step, then the leading lanes of the next vector
// that still do. `count` must be at least the number of lanes. Processes at least one sample, returns how
// many, and leaves the gain of the last one in `gain`.
HWY_INLINE int applyRisingGain(float& gain, float smoothed_gain, float threshold, const float* in, int count,
                               float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto release_keep = hn::Set(d, kReleaseKeep);
    const auto release_step = hn::Set(d, kReleaseStep);
    const auto smoothed = hn::Set(d, smoothed_gain);
    const auto ceiling = hn::Set(d, threshold);

    // Offsets of the gains before and after lanes 0, 1, .., if each sample adds the rise of the first one.
    const float rise = releaseGain(gain, smoothed_gain) - gain;
    const auto ramp = hn::Mul(hn::Iota(d, 0.0F), hn::Set(d, rise));
    const auto next_ramp = hn::Mul(hn::Iota(d, 1.0F), hn::Set(d, rise));
    const float rise_of_all_lanes = static_cast<float>(lanes) * rise;

    float last_gain = gain;
    int done = 0;
    while (done + lanes <= count) {
        const auto start = hn::Set(d, last_gain);
        const auto before = hn::Add(start, ramp);
        const auto guess = hn::Add(start, next_ramp);
        const auto released = hn::Add(hn::Mul(before, release_keep), release_step);
        const auto gains = hn::IfThenElse(hn::Lt(released, smoothed), released, smoothed);
        const auto limited = hn::Mul(gains, hn::LoadU(d, in + done));

        const auto is_right = areSameFloats(d, gains, guess);
        const auto is_too_loud = hn::Gt(hn::Abs(limited), ceiling);
        if (HWY_LIKELY(hn::AllTrue(d, hn::AndNot(is_too_loud, is_right)))) {
            hn::StoreU(limited, d, out + done);
            last_gain += rise_of_all_lanes;  // the last lane's guess: same two operations
            done += lanes;
            continue;
        }

        // All gains up to the lane of the first wrong guess are right; that lane's own gain comes from a
        // right guess.
        const auto first_wrong = hn::FindFirstTrue(d, hn::Not(is_right));
        const int right = first_wrong < 0 ? lanes : static_cast<int>(first_wrong) + 1;
        const auto first_too_loud = hn::FindFirstTrue(d, is_too_loud);
        const bool is_cut = first_too_loud >= 0 && first_too_loud < right;
        const int taken = is_cut ? static_cast<int>(first_too_loud) : right;
        const auto is_taken = hn::Lt(hn::Iota(d, 0.0F), hn::Set(d, static_cast<float>(taken)));
        hn::BlendedStore(limited, is_taken, d, out + done);
        done += taken;

        HWY_ALIGN float lane_gains[hn::MaxLanes(d)];
        hn::Store(gains, d, lane_gains);
        last_gain = lane_gains[is_cut ? taken : taken - 1];
        if (is_cut) {
            out[done] = applyGain(last_gain, in[done], threshold);
            ++done;
        }
        break;
    }
    gain = last_gain;
    return done;
}

float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, float level, const float* in,
                            int count, float* out) {
    const int lanes = static_cast<int>(hn::Lanes(hn::ScalableTag<float>()));
    int done = 0;
    while (count - done >= lanes) {
        // Rounding is monotonic: if the loudest sample stays within the threshold, all samples do.
        if (isSameFloat(releaseGain(gain, smoothed_gain), gain) && std::fabs(gain) * level <= threshold) {
            applyConstantGain(gain, in + done, count - done, out + done);
            return gain;
        }
        done += applyRisingGain(gain, smoothed_gain, threshold, in + done, count - done, out + done);
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

float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, float level, const float* in,
                            int count, float* out) {
    return HWY_DYNAMIC_DISPATCH(limitWithSteadyTarget)(gain, smoothed_gain, threshold, level, in, count, out);
}

}  // namespace sonivex
#endif
