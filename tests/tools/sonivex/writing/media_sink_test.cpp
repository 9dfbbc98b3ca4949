#include "media_sink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "failure.h"
#include "output_file.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// A film in memory: a picture of 25 frames/s, the sound that is rendered, and another sound.
class MediaSinkOfAFilm : public testing::Test {
  protected:
    MediaSinkOfAFilm() : film_(avformat_alloc_context()) {
        film_->iformat = av_find_input_format("matroska");
        AVStream& video = add(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264);
        video.r_frame_rate = video.avg_frame_rate = {25, 1};
        video.codecpar->width = video.codecpar->height = 64;
        add(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_S16LE);
        add(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_S16LE);
    }
    ~MediaSinkOfAFilm() override {
        film_->iformat = nullptr;  // nothing was opened that it could close
        avformat_free_context(film_);
    }

    std::string path(const std::string& name) const { return folder_.file(name); }

    OutputPlan planOf(const OutputSettings& settings) const {
        AudioSpec audio;
        audio.format = AV_SAMPLE_FMT_S16;
        audio.rate_hz = 48000;
        audio.layout = defaultLayout(2);
        return planOutput(settings, *film_, 1, audio, 0);
    }

    static FramePtr silence(const AudioSpec& spec) {
        constexpr int kLength = 48000;
        FramePtr frame = makeFrame(spec, kLength);
        av_samples_set_silence(frame->extended_data, 0, kLength, spec.channels(), spec.format);
        return frame;
    }

    // The picture's packet at a frame, with bytes that are no H.264.
    static PacketPtr picture(int64_t frame) {
        PacketPtr packet(av_packet_alloc());
        if (av_new_packet(packet.get(), 8) < 0) throw std::bad_alloc();
        std::memset(packet->data, 0x55, 8);
        packet->pts = packet->dts = frame;
        packet->duration = 1;
        packet->flags = AV_PKT_FLAG_KEY;
        packet->stream_index = 0;
        return packet;
    }

    template <typename Action>
    static std::string failureOf(ExitCode exit_code, const Action& action) {
        try {
            action();
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), exit_code);
            return failure.what();
        }
        return "no failure";
    }

    test::TemporaryFolder folder_;
    AVFormatContext* film_;

  private:
    AVStream& add(AVMediaType kind, AVCodecID codec) {
        AVStream& stream = *avformat_new_stream(film_, nullptr);
        stream.codecpar->codec_type = kind;
        stream.codecpar->codec_id = codec;
        stream.time_base = {1, 25};
        return stream;
    }
};

TEST_F(MediaSinkOfAFilm, ReleasesThePacketsThatItDoesNotCopy) {
    const OutputPlan plan = planOf({.path = path("a.ts")});
    OutputFile file(path("a.ts"), false);
    MediaSink sink(plan, *film_, 0.0, file);
    const PacketPtr packet = picture(0);
    packet->stream_index = 2;
    sink.copy(*packet);
    EXPECT_EQ(packet->data, nullptr);
    EXPECT_EQ(packet->buf, nullptr);
}

TEST_F(MediaSinkOfAFilm, LeavesOutDamagedPacketsAndCountsThem) {
    const OutputPlan plan = planOf({.path = path("a.ts")});
    OutputFile file(path("a.ts"), false);
    MediaSink sink(plan, *film_, 0.0, file);
    sink.write(*silence(plan.encoder.spec));  // so that the picture's packets go out at once
    for (int frame = 0; frame < 2; ++frame) sink.copy(*picture(frame));
    EXPECT_THAT(sink.notes(), ElementsAre("2 damaged packets could not be copied"));
    EXPECT_NO_THROW(sink.finish());
}

TEST_F(MediaSinkOfAFilm, FailsIfTheContainerCannotGoOn) {
    film_->streams[0]->codecpar->codec_id = AV_CODEC_ID_MPEG4;
    const OutputPlan plan = planOf({.path = path("a.avi")});
    OutputFile file(path("a.avi"), false);
    MediaSink sink(plan, *film_, 0.0, file);
    sink.write(*silence(plan.encoder.spec));
    const auto write = [&] {
        sink.copy(*picture(0));
        sink.copy(*picture(70'000));  // AVI would hold an empty frame for each that is missing
        sink.finish();
    };
    EXPECT_THAT(failureOf(ExitCode::OutputNotWritable, write), StartsWith("cannot write the output: "));
}

TEST_F(MediaSinkOfAFilm, SaysThatTheFormatCannotHoldTheSound) {
    OutputPlan plan = planOf({.path = path("a.wav")});
    plan.encoder.muxer = av_guess_format("flac", nullptr, nullptr);
    OutputFile file(path("a.wav"), false);
    const auto open = [&] { const MediaSink sink(plan, *film_, 0.0, file); };
    EXPECT_THAT(failureOf(ExitCode::OutputFormat, open),
                HasSubstr("a.wav\": flac files cannot hold pcm_s16le with stereo ("));
}

}  // namespace
