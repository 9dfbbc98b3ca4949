#define HWY_TARGET_INCLUDE "bin_analysis.cpp"
#include "compile_for_each_target.h"

#include "bin_analysis.h"
#include "centre_gains.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Magnitudes are computed in double, so each step handles as many bins as a vector has doubles.
using DoubleTag = hn::ScalableTag<double>;
using Tag = hn::Rebind<float, DoubleTag>;
using Doubles = hn::Vec<DoubleTag>;
using Floats = hn::Vec<Tag>;

// Vectors emulated in plain code clamp a magnitude beyond the range of float, where a cast gives infinity.
// The scalar loop takes their place.
constexpr bool kHasVectors = HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128;

struct Bins {
    Floats re;
    Floats im;
};

HWY_INLINE Bins load(const Bin* x) {
    Bins bins;
    hn::LoadInterleaved2(Tag(), reinterpret_cast<const float*>(x), bins.re, bins.im);
    return bins;
}

HWY_INLINE Floats power(const Bins& x) {
    return hn::Add(hn::Mul(x.re, x.re), hn::Mul(x.im, x.im));
}

HWY_INLINE Floats magnitude(const Bins& x) {
    const DoubleTag d;
    const Doubles re = hn::PromoteTo(d, x.re);
    const Doubles im = hn::PromoteTo(d, x.im);
    return hn::DemoteTo(Tag(), hn::Sqrt(hn::Add(hn::Mul(re, re), hn::Mul(im, im))));
}

HWY_INLINE Bins centre(const Bins& sum, Floats sum_power, Floats side_power) {
    const Tag d;
    const Floats ratio = hn::Div(side_power, hn::Add(sum_power, hn::Set(d, FLT_EPSILON)));
    const Floats factor = hn::Mul(hn::Sub(hn::Set(d, 1.0F), hn::Sqrt(ratio)), hn::Set(d, 0.5F));
    return {hn::Mul(factor, sum.re), hn::Mul(factor, sum.im)};
}

HWY_INLINE Floats centreShare(const Bins& x, Floats side_power) {
    const Floats own_power = power(x);
    return hn::Div(own_power, hn::Add(hn::Add(side_power, own_power), hn::Set(Tag(), FLT_EPSILON)));
}

// Returns the squared change of a magnitude and overwrites the previous magnitude.
HWY_INLINE Floats squaredChange(Floats now, float* magnitude) {
    const Floats change = hn::Sub(now, hn::LoadU(Tag(), magnitude));
    hn::StoreU(now, Tag(), magnitude);
    return hn::Mul(change, change);
}

float squaredChange(float now, float& magnitude) {
    const float change = now - magnitude;
    magnitude = now;
    return change * change;
}

// One loop computes everything, because the flux sums alone would mostly wait for their previous addition.
Fluxes analyseBins(const Bin* left, const Bin* right, int bins, Magnitudes magnitudes, CentreShares shares) {
    const Tag d;
    // Without vectors the first loop is never entered. NOLINTNEXTLINE(clang-analyzer-deadcode.DeadStores)
    const int lanes = static_cast<int>(hn::Lanes(d));
    Fluxes fluxes = {0.0F, 0.0F};
    int k = 0;
    for (; kHasVectors && k + lanes <= bins; k += lanes) {
        const Bins l = load(left + k);
        const Bins r = load(right + k);
        const Bins sum = {hn::Add(l.re, r.re), hn::Add(l.im, r.im)};
        const Bins side = {hn::Sub(l.re, r.re), hn::Sub(l.im, r.im)};
        const Floats side_power = power(side);
        hn::StoreU(centreShare(l, side_power), d, shares.left + k);
        hn::StoreU(centreShare(r, side_power), d, shares.right + k);

        const Floats centre_now = magnitude(centre(sum, power(sum), side_power));
        HWY_ALIGN float centre_changes[hn::MaxLanes(d)];
        HWY_ALIGN float side_changes[hn::MaxLanes(d)];
        hn::Store(squaredChange(centre_now, magnitudes.centre + k), d, centre_changes);
        hn::Store(squaredChange(magnitude(side), magnitudes.side + k), d, side_changes);
        for (int lane = 0; lane < lanes; ++lane) {
            fluxes.centre += centre_changes[lane];
            fluxes.side += side_changes[lane];
        }
    }
    for (; k < bins; ++k) {
        const Bin side = left[k] - right[k];
        shares.left[k] = sonivex::centreShare(left[k], sonivex::power(side));
        shares.right[k] = sonivex::centreShare(right[k], sonivex::power(side));
        fluxes.centre += squaredChange(magnitudeOf(centreOf(left[k], right[k])), magnitudes.centre[k]);
        fluxes.side += squaredChange(magnitudeOf(side), magnitudes.side[k]);
    }
    return fluxes;
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {

HWY_EXPORT(analyseBins);

Fluxes analyseBins(const Bin* left, const Bin* right, int bins, Magnitudes magnitudes, CentreShares shares) {
    return HWY_DYNAMIC_DISPATCH(analyseBins)(left, right, bins, magnitudes, shares);
}

}  // namespace sonivex
#endif
