#define HWY_TARGET_INCLUDE "centre_gains.cpp"
#include "compile_for_each_target.h"

#include <cstdint>

#include "centre_gains.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void applyCentreGains(const float* shares, int bins, float presence, GainRange range, Bin* spectrum) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto presences = hn::Set(d, presence);
    const auto scale = hn::Set(d, range.scale);
    const auto floor = hn::Set(d, range.floor);

    // One vector of gains covers two vectors of bins. The table indices give the real and the imaginary part
    // of a bin the same gain.
    HWY_ALIGN std::int32_t sources[2 * hn::MaxLanes(d)];
    for (int i = 0; i < 2 * lanes; ++i) sources[i] = i / 2;
    const auto first = hn::SetTableIndices(d, sources);
    const auto second = hn::SetTableIndices(d, sources + lanes);

    int k = 0;
    for (; k + lanes <= bins; k += lanes) {
        const auto gain = hn::Add(hn::Mul(hn::Mul(hn::LoadU(d, shares + k), presences), scale), floor);
        auto* const parts = reinterpret_cast<float*>(spectrum + k);
        hn::StoreU(hn::Mul(hn::TableLookupLanes(gain, first), hn::LoadU(d, parts)), d, parts);
        hn::StoreU(hn::Mul(hn::TableLookupLanes(gain, second), hn::LoadU(d, parts + lanes)), d,
                   parts + lanes);
    }
    for (; k < bins; ++k) spectrum[k] = (shares[k] * presence * range.scale + range.floor) * spectrum[k];
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {

HWY_EXPORT(applyCentreGains);

void applyCentreGains(const float* shares, int bins, float presence, GainRange range, Bin* spectrum) {
    HWY_DYNAMIC_DISPATCH(applyCentreGains)(shares, bins, presence, range, spectrum);
}

}  // namespace sonivex
#endif
