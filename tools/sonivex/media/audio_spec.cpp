#include "audio_spec.h"

#include <algorithm>
#include <cassert>

#include "vorlin/av_compat.h"

namespace sonivex_tool {

bool AudioSpec::operator==(const AudioSpec& other) const {
    return format == other.format && rate_hz == other.rate_hz &&
           av_channel_layout_compare(&layout, &other.layout) == 0;
}

AVChannelLayout defaultLayout(int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    return layout;
}

AudioSpec specOf(const AVFrame& frame) {
    AudioSpec spec;
    spec.format = static_cast<AVSampleFormat>(frame.format);
    spec.rate_hz = frame.sample_rate;
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE) {
        spec.layout.order = AV_CHANNEL_ORDER_NATIVE;
        spec.layout.nb_channels = frame.ch_layout.nb_channels;
        spec.layout.u.mask = frame.ch_layout.u.mask;
    } else {
        spec.layout = defaultLayout(frame.ch_layout.nb_channels);
    }
    return spec;
}

std::string layoutName(const AVChannelLayout& layout) {
    char name[128] = {};
    if (av_channel_layout_describe(&layout, name, sizeof name) < 0) return "unknown";
    return name;
}

FramePtr makeFrame(const AudioSpec& spec, int frames) {
    FramePtr frame(allocated(av_frame_alloc()));
    frame->format = spec.format;
    frame->sample_rate = spec.rate_hz;
    frame->nb_samples = frames;
    if (Vorlin::av::setFrameLayout(frame.get(), spec.layout) < 0) throw std::bad_alloc();
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

void trimFrame(AVFrame& frame, int skip, int keep) {
    assert(skip >= 0 && keep >= 0 && skip + keep <= frame.nb_samples);
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int planes = planar ? frame.ch_layout.nb_channels : 1;
    const ptrdiff_t step =
        ptrdiff_t{av_get_bytes_per_sample(format)} * (planar ? 1 : frame.ch_layout.nb_channels);
    // A frame of more than AV_NUM_DATA_POINTERS planes has an array of its own for all of them.
    for (int plane = 0; plane < planes; ++plane) frame.extended_data[plane] += skip * step;
    if (frame.extended_data != frame.data)
        std::copy_n(frame.extended_data, std::min(planes, AV_NUM_DATA_POINTERS), frame.data);
    frame.nb_samples = keep;
}

}  // namespace sonivex_tool
