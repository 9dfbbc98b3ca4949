#pragma once

// What differs between the FFmpeg releases that we build with (5.1 to 7.1). No other file tests a version.

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/version.h>
}

#include <cstdint>

/** Releases that need their filters registered are older than the oldest that we build with. */
inline void avfilter_register_all() {}

namespace Vorlin::av {

#if LIBAVUTIL_VERSION_INT < AV_VERSION_INT(59, 0, 0)
#define VORLIN_AV_HAS_OLD_LAYOUT_FIELDS 1
#else
#define VORLIN_AV_HAS_OLD_LAYOUT_FIELDS 0
#endif

// AVFrame::duration came with 6.0; pkt_duration went with 7.0.
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
#define VORLIN_AV_DURATION duration
#else
#define VORLIN_AV_DURATION pkt_duration
#endif

inline int64_t frameDuration(const AVFrame* frame) {
    return frame->VORLIN_AV_DURATION;
}
inline void setFrameDuration(AVFrame* frame, int64_t duration) {
    frame->VORLIN_AV_DURATION = duration;
}
#undef VORLIN_AV_DURATION

/** The mask of a native layout; 0 for any other order. */
inline uint64_t layoutMask(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
}

/** The mask of the default layout of a channel count; 0 when the count has none. */
inline uint64_t defaultLayoutMask(int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    const uint64_t mask = layoutMask(layout);
    av_channel_layout_uninit(&layout);
    return mask;
}

/** Give a frame a layout, and the fields of older releases the same. @return 0 or a negative AVERROR. */
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

/** Give a frame the default layout of a channel count. @return 0 or a negative AVERROR. */
inline int setFrameDefaultLayout(AVFrame* frame, int channels) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    const int result = setFrameLayout(frame, layout);
    av_channel_layout_uninit(&layout);
    return result;
}

#undef VORLIN_AV_HAS_OLD_LAYOUT_FIELDS

}  // namespace Vorlin::av
