#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "av_objects.h"
#include "container_choice.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;

constexpr int kRate_hz = 48000;
constexpr int kDelay_frames = 312;
constexpr int kPacket_frames = 960;

// The header that every stream of Opus needs: stereo, with the delay of its decoder.
constexpr std::array<uint8_t, 19> kOpusHead{'O', 'p', 's', 'u', 'H', 'e', 'a', 'd', 1, 2,
                                            56,  1,   128, 187, 0,   0,   0,   0,   0};

// Writes packets of silence, the first one at a second, later by the delay if the container wants that.
void writeOpus(const std::string& path, const std::string& container) {
    AVFormatContext* muxer = nullptr;
    ASSERT_GE(avformat_alloc_output_context2(&muxer, nullptr, container.c_str(), path.c_str()), 0);
    AVStream* stream = avformat_new_stream(muxer, nullptr);
    stream->time_base = {1, kRate_hz};
    AVCodecParameters& codec = *stream->codecpar;
    codec.codec_type = AVMEDIA_TYPE_AUDIO;
    codec.codec_id = AV_CODEC_ID_OPUS;
    codec.sample_rate = kRate_hz;
    codec.initial_padding = kDelay_frames;
    av_channel_layout_default(&codec.ch_layout, 2);
    codec.extradata = static_cast<uint8_t*>(av_mallocz(kOpusHead.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::memcpy(codec.extradata, kOpusHead.data(), kOpusHead.size());
    codec.extradata_size = static_cast<int>(kOpusHead.size());
    ASSERT_GE(avio_open(&muxer->pb, path.c_str(), AVIO_FLAG_WRITE), 0);
    ASSERT_GE(avformat_write_header(muxer, nullptr), 0);

    const int64_t delay = leavesDelayToCaller(*muxer->oformat, AV_CODEC_ID_OPUS) ? kDelay_frames : 0;
    const PacketPtr packet(av_packet_alloc());
    for (int i = 0; i < 5; ++i) {
        ASSERT_GE(av_new_packet(packet.get(), 3), 0);
        const std::array<uint8_t, 3> silence{0xfc, 0xff, 0xfe};
        std::memcpy(packet->data, silence.data(), silence.size());
        packet->pts = packet->dts =
            av_rescale_q(kRate_hz + delay + i * kPacket_frames, {1, kRate_hz}, stream->time_base);
        packet->duration = av_rescale_q(kPacket_frames, {1, kRate_hz}, stream->time_base);
        ASSERT_GE(av_interleaved_write_frame(muxer, packet.get()), 0);
    }
    ASSERT_GE(av_write_trailer(muxer), 0);
    avio_closep(&muxer->pb);
    avformat_free_context(muxer);
}

double firstTime_s(const std::string& path) {
    AVFormatContext* demuxer = nullptr;
    if (avformat_open_input(&demuxer, path.c_str(), nullptr, nullptr) < 0) return -1;
    const PacketPtr packet(av_packet_alloc());
    double time_s = -1;
    if (av_read_frame(demuxer, packet.get()) >= 0)
        time_s = static_cast<double>(packet->pts) * av_q2d(demuxer->streams[0]->time_base);
    avformat_close_input(&demuxer);
    return time_s;
}

TEST(BlockDelay, OfOpusIsAddedOnceWhicheverLibraryAddsIt) {
    const test::TemporaryFolder folder;
    for (const std::string container : {"matroska", "webm"}) {
        writeOpus(folder.file(container), container);
        EXPECT_NEAR(firstTime_s(folder.file(container)), 1.0, 0.0015) << container;
    }
}

}  // namespace
