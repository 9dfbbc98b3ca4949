// Cover art goes with the sound into every format that holds it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/film.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

class CoverArt : public test::RenderTest {
  protected:
    // Writes a FLAC file with a picture of 64 x 48 points in front.
    void makeInput() {
        test::makeQuietSpeech(file("plain.flac"), 2, {"-metadata", "title=Song"});
        test::ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x48:duration=1:rate=1", "-c:v", "png", "-frames:v",
                      "1", "-f", "image2", file("cover.png")});
        test::ffmpeg({"-i", file("plain.flac"), "-i", file("cover.png"), "-map", "0:a", "-map", "1:v", "-c",
                      "copy", "-disposition:v", "attached_pic", file("in.flac")});
    }
};

TEST_F(CoverArt, IsCopiedByteForByte) {
    makeInput();
    const auto before = test::packets(file("in.flac"), "v:0");
    ASSERT_EQ(before.size(), 1U);
    for (const char* name : {"out.flac", "out.mp3", "out.m4a", "out.mka", "out.mkv", "out.aiff"}) {
        SCOPED_TRACE(name);
        render({file("in.flac"), file(name)});
        const auto after = test::packets(file(name), "v:0");
        ASSERT_EQ(after.size(), 1U);
        EXPECT_EQ(after[0]["data_hash"], before[0]["data_hash"]);
        const auto streams = test::probe(file(name))["streams"];
        const auto& picture = streams[0]["codec_type"] == "video" ? streams[0] : streams[1];
        EXPECT_EQ(picture["disposition"]["attached_pic"], 1);
        EXPECT_EQ(picture["width"], 64);
        const size_t samples = test::decode(file("in.flac")).size();
        EXPECT_GE(test::decode(file(name)).size(), samples);
        EXPECT_LE(test::decode(file(name)).size(), samples + size_t{2 * 1024});  // the last block of AAC
    }
}

TEST_F(CoverArt, IsLeftOutOfOtherFormatsWithANote) {
    makeInput();
    const auto report = render({file("in.flac"), file("out.wav")});
    EXPECT_THAT(report["notes"].get<std::vector<std::string>>(),
                Contains(HasSubstr("stream 1 (picture, png) is left out: wav files cannot hold it")));
    EXPECT_EQ(test::probe(file("out.wav"))["streams"].size(), 1U);
}

TEST_F(CoverArt, IsLeftOutWithAudioOnly) {
    makeInput();
    const auto report = render({file("in.flac"), file("out.flac"), "--audio-only"});
    EXPECT_EQ(test::probe(file("out.flac"))["streams"].size(), 1U);
    EXPECT_TRUE(report["notes"].empty()) << report["notes"];
}

TEST_F(CoverArt, StaysWithAFilm) {
    makeInput();
    test::makeFilm(file("plain.mp4"), {.audio_codec = {"-c:a", "aac"}});
    test::ffmpeg({"-i", file("plain.mp4"), "-i", file("cover.png"), "-map", "0", "-map", "1", "-c", "copy",
                  "-disposition:v:1", "attached_pic", file("in.mp4")});
    const auto before = test::packets(file("in.mp4"), "v:1");
    ASSERT_EQ(before.size(), 1U);
    for (const char* name : {"out.mp4", "out.mkv"}) {
        render({file("in.mp4"), file(name)});
        const auto after = test::packets(file(name), "v:1");
        ASSERT_EQ(after.size(), 1U) << name;
        EXPECT_EQ(after[0]["data_hash"], before[0]["data_hash"]) << name;
        EXPECT_EQ(test::packets(file(name), "v:0").size(), 75U) << name;
    }
}

TEST_F(CoverArt, ChaptersOfAnAudiobookAreKept) {
    test::makeQuietSpeech(file("plain.wav"), 1);
    test::writeFile(file("chapters.txt"),
                    ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=400\ntitle=One\n"
                    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=400\nEND=1000\ntitle=Two\n");
    test::ffmpeg({"-i", file("plain.wav"), "-i", file("chapters.txt"), "-map_metadata", "1", "-c:a", "aac",
                  file("in.m4b")});
    for (const char* name : {"out.m4b", "out.mp3", "out.mka", "out.opus"}) {
        SCOPED_TRACE(name);
        render({file("in.m4b"), file(name)});
        const auto chapters = test::chapters(file(name));
        ASSERT_EQ(chapters.size(), 2U);
        EXPECT_EQ(chapters[1]["tags"]["title"], "Two");
        EXPECT_EQ(std::stod(chapters[1]["start_time"].get<std::string>()), 0.4);
    }
}

}  // namespace
