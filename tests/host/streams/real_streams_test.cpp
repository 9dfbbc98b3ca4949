// Streams that the ffmpeg program encoded and libavcodec decodes, compared with ffmpeg's own decode: frames
// of 2.5 ms, the first of them cut short, frames of 4608, and times in milliseconds.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstring>

#include "host/streams/player_run.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"
#include "support/signals/signal_matchers.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

struct Stream {
    const char* name;
    const char* file;
    std::vector<std::string> encoder;
    int usual_frame;
};

const Stream kStreams[] = {
    {"Opus", "a.opus", {"-c:a", "libopus", "-application", "lowdelay", "-frame_duration", "2.5"}, 120},
    {"OpusInMatroska",
     "a.mka",
     {"-c:a", "libopus", "-application", "lowdelay", "-frame_duration", "2.5"},
     120},
    {"Flac", "a.flac", {"-c:a", "flac"}, 4608},
    {"Mp3InMatroska", "b.mka", {"-c:a", "libmp3lame", "-b:a", "192k"}, 1152},
    {"Aac", "a.m4a", {"-c:a", "aac", "-b:a", "192k"}, 1024},
};

struct FrameTime {
    int64_t pts;
    int64_t duration;
    int frames;
    bool operator==(const FrameTime&) const = default;
};

struct Opened {
    Opened() = default;
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened() {
        avcodec_free_context(&decoder);
        avformat_close_input(&input);
        av_packet_free(&packet);
    }
    AVFormatContext* input = nullptr;
    AVCodecContext* decoder = nullptr;
    AVPacket* packet = av_packet_alloc();
};

void open(Opened& opened, const std::string& path) {
    ASSERT_EQ(avformat_open_input(&opened.input, path.c_str(), nullptr, nullptr), 0) << path;
    ASSERT_GE(avformat_find_stream_info(opened.input, nullptr), 0);
    ASSERT_EQ(opened.input->nb_streams, 1U);
    const AVStream* stream = opened.input->streams[0];
    opened.decoder = avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id));
    ASSERT_EQ(avcodec_parameters_to_context(opened.decoder, stream->codecpar), 0);
    opened.decoder->pkt_timebase = stream->time_base;
    ASSERT_EQ(avcodec_open2(opened.decoder, nullptr, nullptr), 0);
}

class PlayerRealStreams : public testing::TestWithParam<Stream> {};
INSTANTIATE_TEST_SUITE_P(Codecs, PlayerRealStreams, testing::ValuesIn(kStreams),
                         [](const auto& of) { return std::string(of.param.name); });

TEST_P(PlayerRealStreams, KeepTheTimesOfTheDecoderAndGetTheSoundOfTheEffect) {
    const TemporaryFolder folder;
    const std::string path = folder.file(GetParam().file);
    std::vector<std::string> command{
        "ffmpeg", "-nostdin", "-v", "error",
        "-f",     "lavfi",    "-i", "aevalsrc='0.2*sin(900*t*t)|0.1*random(0)':d=1.1:s=48000"};
    command.insert(command.end(), GetParam().encoder.begin(), GetParam().encoder.end());
    command.push_back(path);
    const ProcessResult encoded = runProcess(command);
    ASSERT_EQ(encoded.exit_code, 0) << encoded.err;
    const ProcessResult decoded = runProcess(
        {"ffmpeg", "-nostdin", "-v", "error", "-i", path, "-c:a", "pcm_s16le", "-f", "s16le", "pipe:1"});
    ASSERT_EQ(decoded.exit_code, 0) << decoded.err;
    Pcm pcm(decoded.out.size() / sizeof(int16_t));
    std::memcpy(pcm.data(), decoded.out.data(), pcm.size() * sizeof(int16_t));

    Opened opened;
    open(opened, path);
    if (HasFatalFailure()) return;
    std::vector<FrameTime> times;
    PlayerRun run({.active = true, .delivers_tail = false, .time_base = opened.input->streams[0]->time_base},
                  kSurround);
    const auto receive_frames = [&] {
        Vorlin::OwnedAVFrame frame(av_frame_alloc());
        while (avcodec_receive_frame(opened.decoder, frame.get()) == 0) {
            times.push_back({frame->pts, Vorlin::av::frameDuration(frame.get()), frame->nb_samples});
            EXPECT_EQ(run.player().push(std::make_unique<Vorlin::AVQFFrame>(frame.release())), 0);
            frame.reset(av_frame_alloc());
        }
    };
    while (av_read_frame(opened.input, opened.packet) == 0) {
        ASSERT_EQ(avcodec_send_packet(opened.decoder, opened.packet), 0);
        av_packet_unref(opened.packet);
        receive_frames();
    }
    ASSERT_EQ(avcodec_send_packet(opened.decoder, nullptr), 0);
    receive_frames();
    run.drain();

    std::vector<FrameTime> played;
    for (const Played& frame : run.played()) played.push_back({frame.pts, frame.duration, frame.frames});
    EXPECT_EQ(played, times);
    ASSERT_GT(times.size(), 5U);
    EXPECT_EQ(times[3].frames, GetParam().usual_frame);
    const auto frames = static_cast<int64_t>(pcm.size() / 2);
    const Pcm expected = effectAlone(kSurround, pcm, 2, frames);
    // Beside an emulated test, the program runs on another processor. On 64-bit Arm libswresample rounds most
    // planar floats down, see docs/known-limits.md.
#ifdef __x86_64__
    const bool is_rounded_alike = true;
#else
    const bool is_rounded_alike = opened.decoder->sample_fmt != AV_SAMPLE_FMT_FLTP;
#endif
    EXPECT_TRUE(is_rounded_alike ? sameSignal(run.sound(), expected)
                                 : closeSignal(run.sound(), expected, {.most = 2}));
}

}  // namespace
}  // namespace test
