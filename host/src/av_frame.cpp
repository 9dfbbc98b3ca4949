#include "vorlin/av_frame.h"

#include "vorlin/av_compat.h"

namespace Vorlin {

AVQFFrame::AVQFFrame(AVFrame* frame) : IQFFrame(describe(frame)), mFrame(frame) {}

AVQFFrame::~AVQFFrame() = default;

IQFFrame::audioInfo AVQFFrame::describe(const AVFrame* frame) {
    audioInfo info;
    if (frame == nullptr) return info;
    info.format = frame->format;
    info.channels = frame->ch_layout.nb_channels;
    info.sample_rate = frame->sample_rate;
    info.nb_samples = frame->nb_samples;
    info.channel_layout = av::layoutMask(frame->ch_layout);
    return info;
}

}  // namespace Vorlin
