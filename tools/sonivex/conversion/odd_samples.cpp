#include "odd_samples.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace sonivex_tool {
namespace {

template <typename Sample>
uint64_t silencePlanes(FramePtr& frame) {
    const auto format = static_cast<AVSampleFormat>(frame->format);
    const int channels = frame->ch_layout.nb_channels;
    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int planes = is_planar ? channels : 1;
    const auto length =
        static_cast<size_t>(frame->nb_samples) * static_cast<size_t>(is_planar ? 1 : channels);
    uint64_t found = 0;
    for (int plane = 0; plane < planes; ++plane) {
        const auto samples = [&] {
            return std::span(reinterpret_cast<Sample*>(frame->extended_data[plane]), length);
        };
        const auto is_odd = [](Sample sample) { return !std::isfinite(sample); };
        const auto here = std::count_if(samples().begin(), samples().end(), is_odd);
        if (here == 0) continue;
        if (av_frame_make_writable(frame.get()) < 0) throw std::bad_alloc();
        std::replace_if(samples().begin(), samples().end(), is_odd, Sample{0});
        found += static_cast<uint64_t>(here);
    }
    return found;
}

}  // namespace

uint64_t silenceNonFinite(FramePtr& frame) {
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame->format))) {
        case AV_SAMPLE_FMT_FLT:
            return silencePlanes<float>(frame);
        case AV_SAMPLE_FMT_DBL:
            return silencePlanes<double>(frame);
        default:
            return 0;
    }
}

}  // namespace sonivex_tool
