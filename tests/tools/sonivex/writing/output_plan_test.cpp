#include "output_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;
using testing::Contains;
using testing::ElementsAre;

// A film in memory: H.264, AC-3, and an English subtitle.
class FilmInMemory {
  public:
    FilmInMemory() : context_(avformat_alloc_context()) {
        add(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264);
        add(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_AC3);
        add(AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_SUBRIP);
        av_dict_set(&context_->streams[2]->metadata, "language", "eng", 0);
    }
    ~FilmInMemory() { avformat_free_context(context_); }
    FilmInMemory(const FilmInMemory&) = delete;
    FilmInMemory& operator=(const FilmInMemory&) = delete;

    OutputPlan plan(const std::string& path) const {
        return planOutput({.path = path}, *context_, 1, test::floatSpec(2), 0);
    }

  private:
    void add(AVMediaType kind, AVCodecID codec) {
        AVStream* stream = avformat_new_stream(context_, nullptr);
        stream->codecpar->codec_type = kind;
        stream->codecpar->codec_id = codec;
    }

    AVFormatContext* context_;
};

TEST(OutputPlan, WantsThePacketsOfCopiedStreams) {
    const FilmInMemory film;
    EXPECT_EQ(wantedPackets(film.plan("a.mkv")), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(wantedPackets(film.plan("a.mp4")), (std::vector<bool>{true, false, false}));
    EXPECT_EQ(wantedPackets(film.plan("a.wav")), (std::vector<bool>{false, false, false}));
}

TEST(OutputPlan, IsDescribedInLines) {
    const FilmInMemory film;
    EXPECT_THAT(describe(film.plan("a.mp4")),
                ElementsAre("output a.mp4: mp4, a film", "audio: aac, 48000 Hz, stereo, 192 kbit/s",
                            "stream 0 (video, h264): copied", "stream 1 (audio, ac3): rendered",
                            "stream 2 (subtitle, subrip, eng): left out, mp4 files cannot hold it"));
    EXPECT_THAT(describe(film.plan("a.flac")), Contains("audio: flac, 48000 Hz, stereo, s24"));
}

TEST(OutputPlan, IsDescribedAsJson) {
    const FilmInMemory film;
    const auto json = nlohmann::json::parse(planAsJson(film.plan("a.mp4")));
    EXPECT_EQ(json["format"], "mp4");
    EXPECT_EQ(json["is_film"], true);
    EXPECT_EQ(json["audio"]["codec"], "aac");
    EXPECT_EQ(json["audio"]["bit_rate"], 192'000);
    EXPECT_TRUE(json["audio"]["sample_format"].is_null());
    EXPECT_EQ(json["streams"][2]["fate"], "left out");
    EXPECT_EQ(json["streams"][2]["language"], "eng");
    EXPECT_EQ(json["notes"].size(), 1U);
}

}  // namespace
