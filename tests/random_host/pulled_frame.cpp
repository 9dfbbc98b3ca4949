#include "random_host/pulled_frame.h"

#include <cstddef>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/frame.h>
}

#include "random_host/promise.h"
#include "random_host/samples.h"
#include "vorlin/av_compat.h"

namespace test {

namespace {

using Vorlin::IQFFrame;

AVFrame* samplesOf(IQFFrame* frame) {
    auto* holder = dynamic_cast<Vorlin::AVQFFrame*>(frame);
    return holder != nullptr ? static_cast<AVFrame*>(*holder) : nullptr;
}

bool isSame(const IQFFrame::audioInfo& a, const IQFFrame::audioInfo& b) {
    return a.format == b.format && a.channels == b.channels && a.sample_rate == b.sample_rate &&
           a.nb_samples == b.nb_samples && a.channel_layout == b.channel_layout;
}

void checkPlanes(AVFrame& frame) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    const std::size_t plane_bytes = static_cast<std::size_t>(frame.nb_samples) *
                                    static_cast<std::size_t>(is_planar ? 1 : channels) *
                                    static_cast<std::size_t>(av_get_bytes_per_sample(format));
    for (int i = 0; i < (is_planar ? channels : 1); ++i) {
        const AVBufferRef* buffer = av_frame_get_plane_buffer(&frame, i);
        promise(buffer != nullptr, "every plane of a processed frame lies in a buffer");
        const std::uint8_t* data = frame.extended_data[i];
        promise(data + plane_bytes <= buffer->data + buffer->size, "every plane ends within its buffer");
        promise(areWithinFullScale({data, plane_bytes}, av_get_packed_sample_fmt(format)),
                "processed samples are finite and within full scale");
    }
}

}  // namespace

bool isUntouched(IQFFrame* frame, const FrameNote& note) {
    if (frame != note.object) return false;
    if (frame == nullptr) return true;
    const AVFrame* samples = samplesOf(frame);
    if (!isSame(frame->getInfo(), note.info)) return false;
    if (note.kind == FrameNote::Kind::kWithoutSamples) return samples == nullptr;
    const std::uint8_t* first_plane = samples->extended_data != nullptr ? samples->extended_data[0] : nullptr;
    return samples->format == note.format && samples->ch_layout.nb_channels == note.channels &&
           samples->sample_rate == note.rate_hz && samples->nb_samples == note.frames &&
           first_plane == note.first_plane && samples->pts == note.pts && samples->opaque == note.opaque;
}

void checkProcessed(IQFFrame* frame, const FrameNote& note, const Shape& shape) {
    promise(frame != nullptr && frame == note.object, "the frame that comes out is the object that went in");
    promise(note.kind == FrameNote::Kind::kWithSamples && note.is_honest,
            "only a frame that holds what it describes is processed");
    AVFrame* samples = samplesOf(frame);
    const IQFFrame::audioInfo& info = frame->getInfo();
    const int channels = samples->ch_layout.nb_channels;
    promise(info.format == samples->format && info.channels == channels &&
                info.sample_rate == samples->sample_rate && info.nb_samples == samples->nb_samples &&
                info.channel_layout == Vorlin::av::layoutMask(samples->ch_layout),
            "a processed frame holds what it describes");
    promise(info.format >= 0 && info.format < AV_SAMPLE_FMT_NB, "a processed frame has a sample format");
    promise(shape.format < 0 || info.format == shape.format,
            "a processed frame has the format of the stream's first frame");
    promise(shape.channels > 0 ? channels == shape.channels : (channels == note.channels || channels == 2),
            "a processed frame has the channels of the effect");
    promise(info.channel_layout == Vorlin::av::defaultLayoutMask(channels),
            "a processed frame has the default layout");
    promise(samples->sample_rate == note.rate_hz, "an effect keeps the sample rate");
    promise(samples->nb_samples == note.frames, "an effect keeps the length of a frame");
    promise(samples->pts == note.pts && samples->opaque == note.opaque &&
                Vorlin::av::frameDuration(samples) == note.frames &&
                av_dict_count(samples->metadata) == note.metadata && samples->nb_side_data == note.side_data,
            "an effect keeps times, metadata and side data");
    checkPlanes(*samples);
}

void checkShared(const FrameNote& note) {
    promise(!note.shared || sumOf(*note.shared) == note.shared_sum,
            "the filter does not write to a buffer that others refer to");
}

}  // namespace test
