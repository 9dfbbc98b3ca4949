#pragma once

// Hides the differences between the FFmpeg releases with which the project builds (5.1 to 7.1). Only this
// file, av_format_compat.h and the av_codec_compat.h of the command line test a version.

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/version.h>
}

#include <cstdint>

/** Does nothing. Only releases older than the oldest supported one need their filters registered.
 *  [any, concurrent] real-time safe */
inline void avfilter_register_all() {}

namespace Vorlin::av {

#if LIBAVUTIL_VERSION_INT < AV_VERSION_INT(59, 0, 0)
#define VORLIN_AV_HAS_OLD_LAYOUT_FIELDS 1
#else
#define VORLIN_AV_HAS_OLD_LAYOUT_FIELDS 0
#endif

// AVFrame::duration exists since 6.0; pkt_duration exists until 6.1.
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
#define VORLIN_AV_DURATION duration
#else
#define VORLIN_AV_DURATION pkt_duration
#endif

/** @return the duration of `frame`, in the units of its pts. [any] real-time safe */
inline int64_t frameDuration(const AVFrame* frame) {
    return frame->VORLIN_AV_DURATION;
}
/** Sets the duration of `frame`, in the units of its pts. [any] real-time safe */
inline void setFrameDuration(AVFrame* frame, int64_t duration) {
    frame->VORLIN_AV_DURATION = duration;
}
#undef VORLIN_AV_DURATION

/** @return the channel mask of a layout in native order; 0 for any other order. [any] real-time safe */
inline uint64_t layoutMask(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
}

/** @return the channel mask of the default layout of a channel count; 0 if the count has no default layout.
 *  [any, concurrent] real-time safe */
inline uint64_t defaultLayoutMask(int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    const uint64_t mask = layoutMask(layout);
    av_channel_layout_uninit(&layout);
    return mask;
}

/** Gives a frame a copy of `layout`, also in the deprecated fields of older releases.
 *  @return 0 or a negative AVERROR.
 *  [any] real-time safe unless the old or the new layout is custom: such a layout is freed or allocated */
inline int setFrameLayout(AVFrame* frame, const AVChannelLayout& layout) {
    const int result = av_channel_layout_copy(&frame->ch_layout, &layout);
    if (result < 0) return result;
#if VORLIN_AV_HAS_OLD_LAYOUT_FIELDS
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    frame->channels = frame->ch_layout.nb_channels;
    frame->channel_layout = layoutMask(frame->ch_layout);
#pragma GCC diagnostic pop
#endif
    return 0;
}

/** Gives a frame the default layout of a channel count.
 *  @return 0 or a negative AVERROR.
 *  [any] real-time safe unless the frame has a custom layout, which is freed */
inline int setFrameDefaultLayout(AVFrame* frame, int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    const int result = setFrameLayout(frame, layout);
    av_channel_layout_uninit(&layout);
    return result;
}

#undef VORLIN_AV_HAS_OLD_LAYOUT_FIELDS

}  // namespace Vorlin::av
