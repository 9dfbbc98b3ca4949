#define HWY_TARGET_INCLUDE "lane_frames.cpp"
#include "compile_for_each_target.h"

#include <cstdint>
#include <cstring>

#include "lane_frames.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A frame of one channel moves as a 32-bit integer, a frame of two as a 64-bit one: every bit stays as it is.
template <class D>
HWY_INLINE hn::Vec<D> loadFrames(D d, const LaneSource& source, std::size_t channels, std::size_t i) {
    if (i >= source.filled) return hn::Zero(d);
    const auto* const frames = reinterpret_cast<const hn::TFromD<D>*>(source.first + i * channels);
    if (i + hn::Lanes(d) <= source.filled) return hn::LoadU(d, frames);
    HWY_ALIGN hn::TFromD<D> some[hn::MaxLanes(D())] = {};
    std::memcpy(some, frames, (source.filled - i) * sizeof some[0]);
    return hn::Load(d, some);
}

template <typename Frame>
HWY_INLINE void layFrames(const LaneSources& sources, std::size_t lanes, std::size_t channels,
                          std::size_t block_frames, float* out) {
    const hn::ScalableTag<Frame> d;
    auto* to = reinterpret_cast<Frame*>(out);
    for (std::size_t i = 0; i < block_frames; i += hn::Lanes(d), to += lanes * hn::Lanes(d)) {
        const auto lane0 = loadFrames(d, sources[0], channels, i);
        if (lanes == 1) {
            hn::StoreU(lane0, d, to);
            continue;
        }
        const auto lane1 = loadFrames(d, sources[1], channels, i);
        if (lanes == 2) {
            hn::StoreInterleaved2(lane0, lane1, d, to);
            continue;
        }
        const auto lane2 = loadFrames(d, sources[2], channels, i);
        const auto lane3 = loadFrames(d, sources[3], channels, i);
        hn::StoreInterleaved4(lane0, lane1, lane2, lane3, d, to);
    }
}

void layLanes(const LaneSources& sources, std::size_t lanes, std::size_t channels, std::size_t block_frames,
              float* out) {
    if (channels == 1) return layFrames<std::int32_t>(sources, lanes, channels, block_frames, out);
    layFrames<std::int64_t>(sources, lanes, channels, block_frames, out);
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {

HWY_EXPORT(layLanes);

void layLanes(const LaneSources& sources, std::size_t lanes, std::size_t channels, std::size_t block_frames,
              float* out) {
    HWY_DYNAMIC_DISPATCH(layLanes)(sources, lanes, channels, block_frames, out);
}

}  // namespace sonivex
#endif
