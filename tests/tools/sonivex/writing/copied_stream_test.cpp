#include "copied_stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "container_choice.h"

namespace {

using namespace sonivex_tool;

struct Free {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};
using File = std::unique_ptr<AVFormatContext, Free>;

File matroska() {
    AVFormatContext* muxer = nullptr;
    avformat_alloc_output_context2(&muxer, nullptr, "matroska", nullptr);
    return File(muxer);
}

AVStream& addStream(AVFormatContext& file, AVMediaType kind, AVCodecID codec) {
    AVStream& stream = *avformat_new_stream(&file, nullptr);
    stream.codecpar->codec_type = kind;
    stream.codecpar->codec_id = codec;
    stream.time_base = {1, 1000};
    return stream;
}

std::string tagOf(const AVStream& stream, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(stream.metadata, key, nullptr, 0);
    return entry != nullptr ? entry->value : "";
}

TEST(AttachedPicture, IsNamedAfterItsCodec) {
    const std::pair<AVCodecID, const char*> codecs[] = {
        {AV_CODEC_ID_PNG, "png"},   {AV_CODEC_ID_GIF, "gif"},   {AV_CODEC_ID_BMP, "bmp"},
        {AV_CODEC_ID_TIFF, "tiff"}, {AV_CODEC_ID_WEBP, "webp"}, {AV_CODEC_ID_MJPEG, "jpg"}};
    const File input(avformat_alloc_context());
    const File output = matroska();
    for (const auto& [codec, extension] : codecs) {
        const AVStream& source = addStream(*input, AVMEDIA_TYPE_VIDEO, codec);
        addPictureAsAttachment(source, *output);
        const AVStream& attachment = *output->streams[output->nb_streams - 1];
        const std::string type = codec == AV_CODEC_ID_MJPEG ? "jpeg" : extension;
        EXPECT_EQ(tagOf(attachment, "filename"), std::string("cover.") + extension);
        EXPECT_EQ(tagOf(attachment, "mimetype"), "image/" + type);
        EXPECT_EQ(attachment.codecpar->codec_type, AVMEDIA_TYPE_ATTACHMENT);
    }
}

TEST(AttachedPicture, KeepsTheNameThatItHas) {
    const File input(avformat_alloc_context());
    const File output = matroska();
    AVStream& source = addStream(*input, AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_PNG);
    av_dict_set(&source.metadata, "filename", "front.png", 0);
    addPictureAsAttachment(source, *output);
    EXPECT_EQ(tagOf(*output->streams[0], "filename"), "front.png");
}

// libavformat takes the delay off again, or else adds it itself.
TEST(CopiedStream, OfOpusInMatroskaIsLaterByTheDelayOfItsDecoder) {
    const File input(avformat_alloc_context());
    const File output = matroska();
    AVStream& source = addStream(*input, AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_OPUS);
    source.codecpar->sample_rate = 48000;
    source.codecpar->initial_padding = 480;  // 10 ms
    CopiedStream stream(source, *output, 1'000'000);
    const PacketPtr packet(av_packet_alloc());
    packet->pts = packet->dts = 5000;
    stream.adapt(*packet);
    const int64_t delay = leavesDelayToCaller(*output->oformat, AV_CODEC_ID_OPUS) ? 10 : 0;
    EXPECT_EQ(packet->pts, 4000 + delay);
    EXPECT_EQ(stream.repaired(), 0U);
}

}  // namespace
