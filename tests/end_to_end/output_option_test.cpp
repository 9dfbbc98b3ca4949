// The options that choose the container, the codec and its settings.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/film.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

class OutputOption : public test::RenderTest {
  protected:
    void SetUp() override { test::makeQuietSpeech(file("in.wav"), 2, {"-c:a", "pcm_s24le"}); }

    nlohmann::json streamOf(const std::vector<std::string>& options, const std::string& name) {
        std::vector<std::string> arguments = {file("in.wav"), file(name), "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        render(arguments);
        return test::probe(file(name))["streams"][0];
    }

    void expectRefusal(const std::vector<std::string>& options, const std::string& name,
                       const std::string& part) {
        std::vector<std::string> arguments = {file("in.wav"), file(name), "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto before = folder_.names();
        const auto result = run(arguments);
        EXPECT_EQ(result.exit_code, 9) << part;
        EXPECT_THAT(result.err, HasSubstr(part));
        EXPECT_EQ(folder_.names(), before);
    }
};

TEST_F(OutputOption, CodecTakesTheNamesOfCodecsAndOfEncoders) {
    EXPECT_EQ(streamOf({"--codec", "opus"}, "out.mkv")["codec_name"], "opus");
    EXPECT_EQ(streamOf({"--codec", "libopus"}, "out.mkv")["codec_name"], "opus");
    EXPECT_EQ(streamOf({"--codec", "aac"}, "out.mkv")["codec_name"], "aac");
    EXPECT_EQ(streamOf({"--codec", "mp3"}, "out.mkv")["codec_name"], "mp3");
    EXPECT_EQ(streamOf({"--codec", "alac"}, "out.m4a")["codec_name"], "alac");
    EXPECT_EQ(streamOf({"--codec", "pcm_s16le"}, "out.wav")["codec_name"], "pcm_s16le");
    EXPECT_EQ(streamOf({"--codec", "flac"}, "out.ogg")["codec_name"], "flac");
}

TEST_F(OutputOption, CodecThatTheContainerLacksIsRefusedWithThoseItHas) {
    expectRefusal({"--codec", "opus"}, "out.avi", "avi files cannot hold opus; --codec may be");
    expectRefusal({"--codec", "aac"}, "out.webm", "webm files cannot hold aac; --codec may be opus, vorbis");
    expectRefusal({"--codec", "flac"}, "out.mp3", "--codec may be mp3");
    expectRefusal({"--codec", "nosuch"}, "out.mkv", "there is no audio encoder \"nosuch\"; --codec may be");
    expectRefusal({"--codec", "h264"}, "out.mkv", "there is no audio encoder \"h264\"");
    expectRefusal({"--codec", "copy"}, "out.mkv", "there is no audio encoder \"copy\"");
}

TEST_F(OutputOption, SampleFormatDecidesTheDepthOfPcmAndFlac) {
    EXPECT_EQ(streamOf({}, "out.wav")["codec_name"], "pcm_s24le");
    EXPECT_EQ(streamOf({"--sample-format", "s16"}, "out.wav")["codec_name"], "pcm_s16le");
    EXPECT_EQ(streamOf({"--sample-format", "u8"}, "out.wav")["codec_name"], "pcm_u8");
    EXPECT_EQ(streamOf({"--sample-format", "flt"}, "out.wav")["codec_name"], "pcm_f32le");
    EXPECT_EQ(streamOf({"--sample-format", "dbl"}, "out.w64")["codec_name"], "pcm_f64le");
    EXPECT_EQ(streamOf({"--sample-format", "s24"}, "out.aiff")["codec_name"], "pcm_s24be");
    EXPECT_EQ(streamOf({"--sample-format", "s16"}, "out.flac")["bits_per_raw_sample"], "16");
    EXPECT_EQ(streamOf({"--sample-format", "s24"}, "out.flac")["bits_per_raw_sample"], "24");
    EXPECT_EQ(streamOf({"--codec", "pcm", "--sample-format", "s32"}, "out.mkv")["codec_name"], "pcm_s32le");
}

TEST_F(OutputOption, SampleFormatThatTheCodecLacksIsRefusedWithThoseItHas) {
    expectRefusal({"--sample-format", "u8"}, "out.flac", "--sample-format may be s16, s24");
    expectRefusal({"--sample-format", "s16"}, "out.m4a", "aac does not hold \"s16\" samples");
    expectRefusal({"--codec", "pcm_s24le", "--sample-format", "s16"}, "out.wav", "may be s24");
}

TEST_F(OutputOption, BitRateIsThatOfTheWholeAudio) {
    const auto slow = streamOf({"--bitrate", "64000"}, "out.mp3");
    EXPECT_EQ(slow["bit_rate"], "64000");
    EXPECT_EQ(streamOf({"--bitrate", "320000"}, "out.mp3")["bit_rate"], "320000");
    expectRefusal({"--bitrate", "64000"}, "out.flac", "flac is lossless and takes no --bitrate");
    expectRefusal({"--bitrate", "64000"}, "out.wav", "lossless");
}

TEST_F(OutputOption, FormatOverridesTheExtension) {
    render({file("in.wav"), file("out.dat"), "--format", "flac"});
    EXPECT_EQ(test::probe(file("out.dat"))["format"]["format_name"], "flac");
    render({file("in.wav"), file("film.dat"), "--format", "mkv"});
    EXPECT_EQ(test::probe(file("film.dat"))["format"]["format_name"], "matroska,webm");
    expectRefusal({"--format", "nosuch"}, "out.wav", "unknown file format \"nosuch\" given to --format");
    expectRefusal({"--format", "image2"}, "out.wav", "not an audio file format");
}

TEST_F(OutputOption, DefaultsSuitTheContainer) {
    test::makeQuietSpeech(file("lossy.m4a"), 2, {"-b:a", "192k"});
    test::makeQuietSpeech(file("surround.ac3"), 6, {"-b:a", "448k"});
    test::makeQuietSpeech(file("lossy44.m4a"), 2, {"-ar", "44100", "-b:a", "192k"});
    struct Case {
        const char* input;
        const char* output;
        const char* codec;
    };
    for (const Case& c : {Case{"in.wav", "o.mkv", "flac"}, Case{"lossy.m4a", "o.mkv", "opus"},
                          Case{"lossy44.m4a", "o.mkv", "aac"}, Case{"in.wav", "o.webm", "opus"},
                          Case{"in.wav", "o.mp4", "aac"}, Case{"in.wav", "o.mov", "pcm_s24le"},
                          Case{"lossy.m4a", "o.mov", "aac"}, Case{"in.wav", "o.ts", "aac"},
                          Case{"in.wav", "o.avi", "mp3"}, Case{"surround.ac3", "o.avi", "ac3"},
                          Case{"surround.ac3", "o.mkv", "opus"}, Case{"in.wav", "o.aiff", "pcm_s24be"},
                          Case{"in.wav", "o.caf", "pcm_s24le"}, Case{"in.wav", "o.m4b", "aac"},
                          Case{"in.wav", "o.mka", "flac"}, Case{"in.wav", "o.ogg", "vorbis"}}) {
        SCOPED_TRACE(std::string(c.input) + " to " + c.output);
        render({file(c.input), file(c.output), "--force"});
        EXPECT_EQ(test::probe(file(c.output))["streams"][0]["codec_name"], c.codec);
    }
}

TEST_F(OutputOption, SideChannelsGetALayoutThatPlayersKnow) {
    test::ffmpeg({"-i", file("in.wav"), "-af", "pan=5.1(side)|FL=c0|FR=c1|FC=c0|LFE=c0|SL=c0|SR=c1", "-c:a",
                  "pcm_s16le", file("side.wav")});
    for (const char* codec : {"opus", "aac"}) {
        const auto report = render({file("side.wav"), file("o.mkv"), "--force", "--codec", codec});
        EXPECT_EQ(test::probe(file("o.mkv"))["streams"][0]["channel_layout"], "5.1") << codec;
        EXPECT_EQ(report["output"]["channel_layout"], "5.1");
        EXPECT_EQ(report["notes"].size(), 1U) << report["notes"];
    }
}

TEST_F(OutputOption, AFilmWhosePictureDoesNotFitIsRefused) {
    test::makeFilm(file("film.mkv"));
    for (const char* name : {"out.webm", "out.avi"}) {
        const auto result = run({file("film.mkv"), file(name), "--quiet"});
        EXPECT_EQ(result.exit_code, 9) << name;
        EXPECT_THAT(result.err, HasSubstr("files cannot hold this h264 video"));
        EXPECT_EQ(run({file("film.mkv"), file(name), "--audio-only"}).exit_code, 0) << name;
    }
}

}  // namespace
