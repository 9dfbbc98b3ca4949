#define HWY_TARGET_INCLUDE "pcm.cpp"
#include "compile_for_each_target.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "bit_cast.h"
#include "pcm.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Loads as many samples as a vector of floats has lanes.
template <class D>
HWY_INLINE hn::Vec<D> loadInt16(D d, const std::int16_t* in) {
    const hn::RebindToSigned<D> d32;
    const hn::Rebind<std::int16_t, D> d16;
    return hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(d16, in)));
}

void int16ToFloat(const std::int16_t* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) hn::StoreU(loadInt16(d, in + i), d, out + i);
    for (; i < count; ++i) out[i] = static_cast<float>(in[i]);
}

void addScaledInt16(const std::int16_t* in, float factor, int count, float* sum) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto factors = hn::Set(d, factor);
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto product = hn::Mul(loadInt16(d, in + i), factors);
        hn::StoreU(hn::Add(hn::LoadU(d, sum + i), product), d, sum + i);
    }
    for (; i < count; ++i) sum[i] += static_cast<float>(in[i]) * factor;
}

// Both conversions, to int32 and to int16, saturate. A NaN becomes 0 first.
void floatToInt16(const float* in, int count, std::int16_t* out) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const hn::Rebind<std::int16_t, decltype(d)> d16;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sample = hn::LoadU(d, in + i);
        const auto number = hn::IfThenElseZero(hn::Eq(sample, sample), sample);
        hn::StoreU(hn::DemoteTo(d16, hn::ConvertTo(d32, number)), d16, out + i);
    }
    for (; i < count; ++i) out[i] = truncateToInt16(in[i]);
}

// Tracks minimum and maximum separately, because the magnitude of -32768 does not fit an int16.
int largestMagnitudeOfInt16(const std::int16_t* in, int count) {
    const hn::ScalableTag<std::int16_t> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    auto lows = hn::Zero(d);
    auto highs = lows;
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto samples = hn::LoadU(d, in + i);
        lows = hn::Min(lows, samples);
        highs = hn::Max(highs, samples);
    }
    HWY_ALIGN std::int16_t ends[2 * hn::MaxLanes(d)];
    hn::Store(lows, d, ends);
    hn::Store(highs, d, ends + lanes);
    int largest = 0;
    for (int lane = 0; lane < 2 * lanes; ++lane) largest = std::max(largest, std::abs(int{ends[lane]}));
    for (; i < count; ++i) largest = std::max(largest, std::abs(int{in[i]}));
    return largest;
}

// Compares magnitudes by their bits, which as integers have the same order; the bits of a NaN are above those
// of infinity. A maximum does not round, so the samples may be taken in any order.
std::int32_t largestMagnitudeBits(const float* in, int count) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> bits;
    const int lanes = static_cast<int>(hn::Lanes(d));
    auto even = hn::Zero(bits);
    auto odd = even;
    int i = 0;
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        even = hn::Max(even, hn::BitCast(bits, hn::Abs(hn::LoadU(d, in + i))));
        odd = hn::Max(odd, hn::BitCast(bits, hn::Abs(hn::LoadU(d, in + i + lanes))));
    }
    std::int32_t largest = hn::GetLane(hn::MaxOfLanes(bits, hn::Max(even, odd)));
    for (; i < count; ++i) largest = std::max(largest, bit_cast<std::int32_t>(std::fabs(in[i])));
    return largest;
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {
namespace {

HWY_EXPORT(addScaledInt16);
HWY_EXPORT(floatToInt16);
HWY_EXPORT(int16ToFloat);
HWY_EXPORT(largestMagnitudeBits);
HWY_EXPORT(largestMagnitudeOfInt16);

constexpr auto kInfinityBits = bit_cast<std::int32_t>(std::numeric_limits<float>::infinity());

float largestMagnitudeBesideNaN(const float* in, int count) {
    float largest = 0.0F;
    for (int i = 0; i < count; ++i) {
        const float magnitude = std::fabs(in[i]);
        largest = magnitude > largest ? magnitude : largest;
    }
    return largest;
}

}  // namespace

void int16ToFloat(const std::int16_t* in, int count, float* out) {
    HWY_DYNAMIC_DISPATCH(int16ToFloat)(in, count, out);
}

void addScaledInt16(const std::int16_t* in, float factor, int count, float* sum) {
    HWY_DYNAMIC_DISPATCH(addScaledInt16)(in, factor, count, sum);
}

void floatToInt16(const float* in, int count, std::int16_t* out) {
    HWY_DYNAMIC_DISPATCH(floatToInt16)(in, count, out);
}

int largestMagnitude(const std::int16_t* in, int count) {
    return HWY_DYNAMIC_DISPATCH(largestMagnitudeOfInt16)(in, count);
}

float largestMagnitude(const float* in, int count) {
    const std::int32_t largest = HWY_DYNAMIC_DISPATCH(largestMagnitudeBits)(in, count);
    if (largest <= kInfinityBits) return bit_cast<float>(largest);
    return largestMagnitudeBesideNaN(in, count);
}

}  // namespace sonivex
#endif
