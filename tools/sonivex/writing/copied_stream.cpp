#include "copied_stream.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "container_choice.h"
#include "failure.h"
#include "metadata.h"
#include "vorlin/av_format_compat.h"

namespace sonivex_tool {
namespace {

void check(int result) {
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) throw Failure(ExitCode::OutputFormat, "cannot copy a stream: " + errorText(result));
}

// The container's code for the codec is kept if it means the same in the new container. Otherwise the muxer
// chooses its own.
uint32_t tagInContainer(const AVOutputFormat& muxer, const AVCodecParameters& codec) {
    unsigned tag = 0;
    const bool is_valid = muxer.codec_tag == nullptr ||
                          av_codec_get_id(muxer.codec_tag, codec.codec_tag) == codec.codec_id ||
                          av_codec_get_tag2(muxer.codec_tag, codec.codec_id, &tag) == 0;
    return is_valid ? codec.codec_tag : 0;
}

// The time base that the muxer is to use if it can. AVI counts frames, so it needs the frame rate.
AVRational timeBaseFor(const AVStream& source, const AVOutputFormat& muxer) {
    const bool has_rate = source.r_frame_rate.num > 0 && source.r_frame_rate.den > 0;
    if (isOneOf(muxer, "avi") && source.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && has_rate)
        return av_inv_q(source.r_frame_rate);
    return source.time_base;
}

// The delay of the stream's blocks in the new container, in the source's time base.
int64_t blockDelay(const AVStream& source, const AVOutputFormat& muxer) {
    const AVCodecParameters& codec = *source.codecpar;
    if (!leavesDelayToCaller(muxer, codec.codec_id) || codec.sample_rate <= 0) return 0;
    return av_rescale_q(codec.initial_padding, {1, codec.sample_rate}, source.time_base);
}

AVStream& addStream(AVFormatContext& muxer, const AVStream& source) {
    AVStream& stream = *allocated(avformat_new_stream(&muxer, nullptr));
    check(avcodec_parameters_copy(stream.codecpar, source.codecpar));
    copyStreamMetadata(source, stream);
    return stream;
}

void setIfMissing(AVDictionary** tags, const char* key, const std::string& value) {
    av_dict_set(tags, key, value.c_str(), AV_DICT_DONT_OVERWRITE);
}

struct PictureType {
    const char* extension;
    const char* mime_type;
};

PictureType pictureType(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_PNG:
            return {"png", "image/png"};
        case AV_CODEC_ID_GIF:
            return {"gif", "image/gif"};
        case AV_CODEC_ID_BMP:
            return {"bmp", "image/bmp"};
        case AV_CODEC_ID_TIFF:
            return {"tiff", "image/tiff"};
        case AV_CODEC_ID_WEBP:
            return {"webp", "image/webp"};
        default:
            return {"jpg", "image/jpeg"};
    }
}

}  // namespace

CopiedStream::CopiedStream(const AVStream& source, AVFormatContext& muxer, int64_t origin_us)
    : source_(source),
      output_(&addStream(muxer, source)),
      shift_(blockDelay(source, *muxer.oformat) - av_rescale_q(origin_us, kMicrosecond, source.time_base)),
      repair_((muxer.oformat->flags & AVFMT_TS_NONSTRICT) == 0, source.codecpar->video_delay) {
    output_->codecpar->codec_tag = tagInContainer(*muxer.oformat, *source.codecpar);
    output_->time_base = timeBaseFor(source, *muxer.oformat);
    output_->avg_frame_rate = source.avg_frame_rate;
    output_->r_frame_rate = source.r_frame_rate;
    output_->sample_aspect_ratio = source.sample_aspect_ratio.num != 0 ? source.sample_aspect_ratio
                                                                       : source.codecpar->sample_aspect_ratio;
    if (source.sample_aspect_ratio.num != 0)
        output_->codecpar->sample_aspect_ratio = source.sample_aspect_ratio;
    output_->duration = av_rescale_q(source.duration, source.time_base, output_->time_base);
    check(Vorlin::av::copyStreamSideData(output_, &source));
}

void CopiedStream::adapt(AVPacket& packet) {
    if (packet.pts != AV_NOPTS_VALUE) packet.pts += shift_;
    if (packet.dts != AV_NOPTS_VALUE) packet.dts += shift_;
    av_packet_rescale_ts(&packet, source_.time_base, output_->time_base);
    const PacketTimes times = repair_.repair({packet.pts, packet.dts, packet.duration});
    packet.pts = times.pts;
    packet.dts = times.dts;
    packet.duration = times.duration;
    packet.stream_index = output_->index;
    packet.pos = -1;
}

void addAttachment(const AVStream& source, AVFormatContext& muxer) {
    AVStream& stream = addStream(muxer, source);
    stream.codecpar->codec_tag = 0;
    setIfMissing(&stream.metadata, "filename", "attachment-" + std::to_string(source.index));
    setIfMissing(&stream.metadata, "mimetype", "application/octet-stream");
}

void addPictureAsAttachment(const AVStream& source, AVFormatContext& muxer) {
    AVStream& stream = *allocated(avformat_new_stream(&muxer, nullptr));
    copyStreamMetadata(source, stream);
    const AVPacket& picture = source.attached_pic;
    stream.disposition = 0;
    stream.codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
    stream.codecpar->codec_id = source.codecpar->codec_id;
    const auto bytes = static_cast<size_t>(picture.size);
    stream.codecpar->extradata =
        static_cast<uint8_t*>(allocated(av_mallocz(bytes + AV_INPUT_BUFFER_PADDING_SIZE)));
    if (bytes > 0) std::memcpy(stream.codecpar->extradata, picture.data, bytes);
    stream.codecpar->extradata_size = picture.size;
    const PictureType type = pictureType(source.codecpar->codec_id);
    setIfMissing(&stream.metadata, "filename", std::string("cover.") + type.extension);
    setIfMissing(&stream.metadata, "mimetype", type.mime_type);
}

void addChapters(const AVFormatContext& source, AVFormatContext& muxer, int64_t origin_us) {
    if (source.nb_chapters == 0) return;
    muxer.chapters = static_cast<AVChapter**>(
        allocated(av_calloc(source.nb_chapters, sizeof(AVChapter*))));  // the muxer frees it
    for (unsigned i = 0; i < source.nb_chapters; ++i) {
        const AVChapter& from = *source.chapters[i];
        auto* to = static_cast<AVChapter*>(allocated(av_mallocz(sizeof(AVChapter))));
        muxer.chapters[muxer.nb_chapters++] = to;
        const int64_t origin = av_rescale_q(origin_us, kMicrosecond, from.time_base);
        to->id = from.id;
        to->time_base = from.time_base;
        to->start = std::max<int64_t>(from.start - origin, 0);
        to->end = std::max<int64_t>(from.end - origin, to->start);
        if (av_dict_copy(&to->metadata, from.metadata, 0) < 0) throw std::bad_alloc();
    }
}

}  // namespace sonivex_tool
