#include "frame_checks.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

#include <bit>
#include <cstdint>

namespace Vorlin {

namespace {

// Returns the bytes from `data` to the end of `buffer`, or 0 if `data` points elsewhere.
std::size_t bytesBehind(const AVBufferRef* buffer, const uint8_t* data) {
    if (buffer == nullptr || data < buffer->data || data > buffer->data + buffer->size) return 0;
    return static_cast<std::size_t>(buffer->data + buffer->size - data);
}

bool planeHolds(const AVFrame* frame, int plane, std::size_t bytes) {
    const uint8_t* data = frame->extended_data[plane];
    if (data == nullptr) return false;
    // A frame without buffers keeps its samples elsewhere, and only its line size tells how long a plane is.
    // A line size of 0 is allowed: the plane is then taken to hold exactly the samples of the frame.
    if (frame->buf[0] == nullptr) {
        const int line_bytes = frame->linesize[0];
        return line_bytes == 0 || (line_bytes > 0 && static_cast<std::size_t>(line_bytes) >= bytes);
    }
    const AVBufferRef* buffer = av_frame_get_plane_buffer(const_cast<AVFrame*>(frame), plane);
    return bytesBehind(buffer, data) >= bytes;
}

}  // namespace

bool frameMatchesDescription(const IQFFrame::audioInfo& info, const AVFrame* frame) {
    if (info.format < 0 || info.format >= AV_SAMPLE_FMT_NB) return false;
    const auto format = static_cast<AVSampleFormat>(info.format);
    const int sample_bytes = av_get_bytes_per_sample(format);
    if (frame->format != info.format) return false;
    if (info.channels <= 0 || frame->ch_layout.nb_channels != info.channels) return false;
    if (info.channel_layout != 0 && std::popcount(info.channel_layout) != info.channels) return false;
    if (info.sample_rate <= 0 || frame->sample_rate != info.sample_rate) return false;
    if (frame->nb_samples <= 0 || frame->extended_data == nullptr) return false;

    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int planes = is_planar ? info.channels : 1;
    const int samples_per_frame = is_planar ? 1 : info.channels;
    const std::size_t plane_bytes = static_cast<std::size_t>(frame->nb_samples) *
                                    static_cast<std::size_t>(samples_per_frame) *
                                    static_cast<std::size_t>(sample_bytes);
    for (int plane = 0; plane < planes; ++plane) {
        if (!planeHolds(frame, plane, plane_bytes)) return false;
    }
    return true;
}

bool canWriteFirstPlane(const AVFrame* frame, std::size_t bytes) {
    return frame->buf[0] != nullptr && av_buffer_is_writable(frame->buf[0]) != 0 &&
           bytesBehind(frame->buf[0], frame->extended_data[0]) >= bytes;
}

}  // namespace Vorlin
