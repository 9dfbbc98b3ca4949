// Renders films: the chosen sound is replaced, everything else is copied, and all stays in step.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/version.h>
}

#include <cmath>

#include "end_to_end/media/film.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr double kSample_s = 1.0 / 48000;
constexpr double kMillisecond_s = 0.001;

struct Step {
    std::string name;
    test::FilmOptions film;
    std::string input;
    std::string output;
    std::vector<std::string> options;
    std::string codec;   // expected of the sound
    double tolerance_s;  // what the container's clock resolves, or the input's
};

void PrintTo(const Step& step, std::ostream* stream) {
    *stream << step.name;
}

class FilmInStep : public test::RenderTest, public testing::WithParamInterface<Step> {};
class Film : public test::RenderTest {
  protected:
    // Returns the value of `key` in every stream of a file.
    static std::vector<std::string> all(const nlohmann::json& probe, const std::string& key) {
        std::vector<std::string> values;
        for (const auto& stream : probe["streams"]) values.push_back(stream.value(key, ""));
        return values;
    }

    static std::string tag(const nlohmann::json& stream, const std::string& name) {
        return stream["tags"].value(name, "");
    }
};

TEST_P(FilmInStep, SoundStaysWithThePicture) {
    const Step& step = GetParam();
    test::makeFilm(file(step.input), step.film);
    test::makeFilmSpeech(file("speech.wav"));
    std::vector<std::string> arguments = {file(step.input), file(step.output)};
    arguments.insert(arguments.end(), step.options.begin(), step.options.end());
    render(arguments);

    const auto streams = test::probe(file(step.output))["streams"];
    ASSERT_EQ(streams.size(), 2U);
    EXPECT_EQ(streams[0]["codec_type"], "video");
    EXPECT_EQ(streams[1]["codec_name"], step.codec);

    const auto before = test::packets(file(step.input), "v:0");
    const auto after = test::packets(file(step.output), "v:0");
    ASSERT_EQ(before.size(), 75U);
    ASSERT_EQ(after.size(), before.size());
    const double offset = test::soundAfterPicture(file(step.input), file("speech.wav"));
    EXPECT_NEAR(offset, std::stod(step.film.audio_offset_s), 0.05);
    const double moved = test::soundAfterPicture(file(step.output), file("speech.wav")) - offset;
    RecordProperty("sound_moved_us", std::to_string(std::lround(moved * 1e6)));
    constexpr double kRounding_s = 1e-9;
    EXPECT_NEAR(moved, 0.0, step.tolerance_s + kRounding_s);
}

const test::FilmOptions kFlac{.audio_codec = {"-c:a", "flac"}};
const test::FilmOptions kLateFlac{.audio_codec = {"-c:a", "flac"}, .audio_offset_s = "0.5"};
const test::FilmOptions kAc3{.audio_codec = {"-c:a", "ac3", "-b:a", "448k"}};
const test::FilmOptions kLateAc3{.audio_codec = {"-c:a", "ac3", "-b:a", "448k"}, .audio_offset_s = "0.5"};
const test::FilmOptions kAac44{.audio_codec = {"-c:a", "aac", "-b:a", "256k"}, .rate_hz = 44100};
const test::FilmOptions kAac{.audio_codec = {"-c:a", "aac", "-b:a", "256k"}};
const test::FilmOptions kLateAac{.audio_codec = {"-c:a", "aac", "-b:a", "256k"}, .audio_offset_s = "0.5"};
const test::FilmOptions kPcm{};
const test::FilmOptions kLatePcm{.audio_offset_s = "0.5"};
const test::FilmOptions kVp9{.video_codec = {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8"},
                             .audio_codec = {"-c:a", "libopus", "-b:a", "256k"}};
const test::FilmOptions kMpeg4{.video_codec = {"-c:v", "mpeg4"}, .audio_codec = {"-c:a", "pcm_s16le"}};
const test::FilmOptions kLateMpeg4{
    .video_codec = {"-c:v", "mpeg4"}, .audio_codec = {"-c:a", "pcm_s16le"}, .audio_offset_s = "0.5"};

INSTANTIATE_TEST_SUITE_P(
    Containers, FilmInStep,
    testing::Values(
        Step{"MkvFlac", kFlac, "in.mkv", "out.mkv", {}, "flac", 0.5 * kSample_s},
        Step{"MkvFlacLate", kLateFlac, "in.mkv", "out.mkv", {}, "flac", 0.5 * kSample_s},
        Step{"MkvOpus", kAc3, "in.mkv", "out.mkv", {}, "opus", kMillisecond_s},
        Step{"MkvOpusLate", kLateAc3, "in.mkv", "out.mkv", {}, "opus", kMillisecond_s},
        Step{"MkvAac", kFlac, "in.mkv", "out.mkv", {"--codec", "aac"}, "aac", kMillisecond_s},
        Step{"MkvAacLate", kLateFlac, "in.mkv", "out.mkv", {"--codec", "aac"}, "aac", kMillisecond_s},
        Step{"MkvAacAt44100Hz", kAac44, "in.mkv", "out.mkv", {}, "aac", kMillisecond_s},
        Step{"Mp4Aac", kAac, "in.mp4", "out.mp4", {}, "aac", 1.5 * kSample_s},
        Step{"Mp4AacLate", kLateAac, "in.mp4", "out.mp4", {}, "aac", kMillisecond_s},
        Step{"MkvToMp4", kFlac, "in.mkv", "out.mp4", {}, "aac", 1.5 * kSample_s},
        Step{"MkvToMp4Late", kLateFlac, "in.mkv", "out.mp4", {}, "aac", 1.5 * kSample_s},
        Step{"MovPcm", kPcm, "in.mov", "out.mov", {}, "pcm_s16le", 1.5 * kSample_s},
        Step{"MovPcmLate", kLatePcm, "in.mov", "out.mov", {}, "pcm_s16le", kMillisecond_s},
        Step{"MovAac", kPcm, "in.mov", "out.mov", {"--codec", "aac"}, "aac", 1.5 * kSample_s},
        Step{"Webm", kVp9, "in.webm", "out.webm", {}, "opus", kMillisecond_s},
        Step{"TransportStream", kAc3, "in.ts", "out.ts", {}, "aac", 2.0 * kSample_s},
        Step{"TransportStreamToMkv", kLateAc3, "in.ts", "out.mkv", {}, "opus", kMillisecond_s},
        Step{"TransportStreamToMp4", kLateAc3, "in.ts", "out.mp4", {}, "aac", 2.0 * kSample_s},
        Step{"AviMp3", kMpeg4, "in.avi", "out.avi", {}, "mp3", 2.0 * kSample_s},
        Step{"MkvToAviLate", kLateMpeg4, "in.mkv", "out.avi", {}, "mp3", 2.0 * kSample_s}),
    [](const testing::TestParamInfo<Step>& test) { return test.param.name; });

// Returns the packets of a stream, with times in milliseconds. The Matroska muxer of FFmpeg 7 states the
// delay of every encoder: such a file begins before 0 and its copy at 0, so there the times count from the
// picture's first frame.
nlohmann::json packetsInStep(const std::string& path, const std::string& stream) {
    constexpr double kTicksPerSecond = 1000.0;
    const auto ticks = [](const nlohmann::json& packet, const std::string& time) {
        return std::lround(std::stod(packet[time].get<std::string>()) * kTicksPerSecond);
    };
    constexpr bool kIsFfmpeg7 = LIBAVUTIL_VERSION_MAJOR >= 59;
    const long origin = kIsFfmpeg7 ? ticks(test::packets(path, "v:0")[0], "pts_time") : 0;
    auto packets = test::packets(path, stream);
    for (auto& packet : packets) {
        for (const char* time : {"pts_time", "dts_time"})
            if (packet.contains(time)) packet[time] = ticks(packet, time) - origin;
    }
    return packets;
}

TEST_F(Film, KeepsEveryPacketOfTheOtherStreamsAndItsTime) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    render({file("in.mkv"), file("out.mkv"), "--keep-others"});
    for (const char* stream : {"v:0", "a:1", "s:0", "s:1"})
        EXPECT_EQ(packetsInStep(file("out.mkv"), stream), packetsInStep(file("in.mkv"), stream)) << stream;
}

TEST_F(Film, KeepsOrderLanguagesTitlesAndDispositions) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    render({file("in.mkv"), file("out.mkv"), "--keep-others"});
    const auto before = test::probe(file("in.mkv"));
    const auto after = test::probe(file("out.mkv"));
    EXPECT_EQ(all(after, "codec_type"), all(before, "codec_type"));
    ASSERT_EQ(after["streams"].size(), 6U);
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(after["streams"][i]["disposition"], before["streams"][i]["disposition"]) << i;
        EXPECT_EQ(tag(after["streams"][i], "language"), tag(before["streams"][i], "language")) << i;
        EXPECT_EQ(tag(after["streams"][i], "title"), tag(before["streams"][i], "title")) << i;
    }
    EXPECT_EQ(after["streams"][1]["codec_name"], "opus");
    EXPECT_EQ(after["streams"][2]["codec_name"], "aac");
    EXPECT_EQ(tag(after["streams"][5], "filename"), "font.ttf");
    EXPECT_EQ(after["streams"][5]["extradata_size"], before["streams"][5]["extradata_size"]);
    EXPECT_EQ(after["format"]["tags"]["title"], "Film");
}

TEST_F(Film, RendersTheSecondTrackInItsPlace) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    render({file("in.mkv"), file("out.mkv"), "--keep-others", "--stream", "1"});
    EXPECT_EQ(packetsInStep(file("out.mkv"), "a:0"), packetsInStep(file("in.mkv"), "a:0"));
    const auto streams = test::probe(file("out.mkv"))["streams"];
    EXPECT_EQ(streams[1]["codec_name"], "ac3");
    EXPECT_EQ(streams[2]["codec_name"], "opus");
    EXPECT_EQ(tag(streams[2], "language"), "fre");
}

TEST_F(Film, LeavesOtherSoundOutUnlessAskedAndSaysSo) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    const auto report = render({file("in.mkv"), file("out.mkv")});
    EXPECT_THAT(all(test::probe(file("out.mkv")), "codec_name"),
                testing::ElementsAre("h264", "opus", "subrip", "ass", "ttf"));
    EXPECT_THAT(report["notes"].get<std::vector<std::string>>(),
                Contains(HasSubstr("stream 2 (audio, aac, fre) is left out")));
}

TEST_F(Film, KeepsChapters) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    for (const char* name : {"out.mkv", "out.mp4"}) {
        render({file("in.mkv"), file(name)});
        const auto chapters = test::chapters(file(name));
        ASSERT_EQ(chapters.size(), 2U) << name;
        EXPECT_EQ(chapters[1]["tags"]["title"], "Second");
        EXPECT_NEAR(std::stod(chapters[1]["start_time"].get<std::string>()), 2.0, kMillisecond_s);
    }
}

TEST_F(Film, NamesWhatTheContainerCannotHold) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    const auto report = render({file("in.mkv"), file("out.mp4")});
    const auto notes = report["notes"].get<std::vector<std::string>>();
    EXPECT_THAT(notes, Contains("stream 3 (subtitle, subrip, eng) is left out: mp4 files cannot hold it"));
    EXPECT_THAT(notes, Contains("stream 5 (attachment, ttf) is left out: mp4 files cannot hold it"));
}

TEST_F(Film, AudioOnlyCopiesNothing) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    const auto report = render({file("in.mkv"), file("out.mkv"), "--audio-only"});
    EXPECT_THAT(all(test::probe(file("out.mkv")), "codec_name"), testing::ElementsAre("opus"));
    EXPECT_THAT(report["notes"].get<std::vector<std::string>>(),
                testing::Not(Contains(HasSubstr("left out"))));
}

TEST_F(Film, AnAudioFileOfAFilmHoldsOnlyItsSound) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    for (const char* name : {"out.m4a", "out.mka", "out.flac"}) {
        render({file("in.mkv"), file(name)});
        for (const std::string& kind : all(test::probe(file(name)), "codec_type"))
            EXPECT_NE(kind, "video") << name;
    }
}

// Copies a film so that players turn its picture by 90 degrees.
void turn(const std::string& from, const std::string& to, const std::vector<std::string>& options = {}) {
#if LIBAVUTIL_VERSION_MAJOR >= 58  // FFmpeg 6
    std::vector<std::string> command{"-display_rotation:v:0", "90", "-i", from, "-c", "copy"};
#else
    std::vector<std::string> command{"-i", from, "-c", "copy", "-metadata:s:v:0", "rotate=90"};
#endif
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(to);
    test::ffmpeg(command);
}

TEST_F(Film, KeepsTheRotationAndTheAspectRatioOfThePicture) {
    test::makeFilm(file("plain.mp4"), {.audio_codec = {"-c:a", "aac"}});
    turn(file("plain.mp4"), file("in.mp4"), {"-aspect", "2:1"});
    render({file("in.mp4"), file("out.mp4")});
    const auto before = test::probe(file("in.mp4"))["streams"][0];
    const auto after = test::probe(file("out.mp4"))["streams"][0];
    ASSERT_EQ(before["side_data_list"][0]["side_data_type"], "Display Matrix");
    EXPECT_EQ(after["side_data_list"], before["side_data_list"]);
    EXPECT_EQ(before["display_aspect_ratio"], "2:1");
    EXPECT_EQ(after["sample_aspect_ratio"], before["sample_aspect_ratio"]);
    EXPECT_EQ(after["avg_frame_rate"], before["avg_frame_rate"]);
}

TEST_F(Film, SaysWhereTheRotationIsLost) {
    test::makeFilm(file("plain.mp4"), {.video_codec = {"-c:v", "mpeg4"}, .audio_codec = {"-c:a", "aac"}});
    turn(file("plain.mp4"), file("turned.mp4"));
    const auto notesOf = [this](const std::string& in, const std::string& out) {
        return render({file(in), file(out), "--force"})["notes"].get<std::vector<std::string>>();
    };
    for (const char* out : {"out.mkv", "out.avi", "out.mp4"}) {
        const auto notes = notesOf("turned.mp4", out);
        const auto picture = test::probe(file(out))["streams"][0];
        const bool is_kept = picture.contains("side_data_list") &&
                             picture["side_data_list"][0]["side_data_type"] == "Display Matrix";
        const auto is_noted = Contains(HasSubstr("stream 0 (video, mpeg4, und) loses its rotation"));
        if (is_kept) {
            EXPECT_THAT(notes, testing::Not(is_noted)) << out;
        } else {
            EXPECT_THAT(notes, is_noted) << out;
        }
        EXPECT_THAT(notesOf("plain.mp4", out), testing::Not(Contains(HasSubstr("rotation")))) << out;
    }
}

TEST_F(Film, SaysThatAFormatCannotHoldTheChapters) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    const auto left_out = HasSubstr("the chapters of IN are left out: wav files cannot hold them");
    const auto wav = render({file("in.mkv"), file("out.wav")});
    EXPECT_THAT(wav["notes"].get<std::vector<std::string>>(), Contains(left_out));
    const auto mka = render({file("in.mkv"), file("out.mka")});
    EXPECT_THAT(mka["notes"].get<std::vector<std::string>>(), testing::Not(Contains(HasSubstr("chapter"))));
}

TEST_F(Film, NamesTheOutputAndTheVideoThatTheMuxerRefuses) {
    test::makeFilm(file("in.webm"), kVp9);
    const auto result = run({file("in.webm"), file("out.mov")});
    EXPECT_EQ(result.exit_code, 9);
    EXPECT_THAT(result.err, HasSubstr("cannot write \"" + file("out.mov") +
                                      "\": mov files cannot hold one of "
                                      "the copied streams, most likely the vp9 video"));
    EXPECT_THAT(result.err, HasSubstr("--audio-only"));
    render({file("in.webm"), file("out.mov"), "--audio-only"});
}

TEST_F(Film, ACleanTransportStreamNeedsNoRepair) {
    test::makeFilm(file("in.ts"), {.audio_codec = {"-c:a", "ac3", "-b:a", "448k"}});
    const auto report = render({file("in.ts"), file("out.ts")});
    EXPECT_THAT(report["notes"].get<std::vector<std::string>>(),
                testing::Not(Contains(HasSubstr("timestamps"))));
}

TEST_F(Film, RendersTheSameBytesEveryTime) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    for (const std::string extension : {"mp4", "mkv", "mka", "opus", "ogg"}) {
        render({file("in.mkv"), file("a." + extension), "--keep-others"});
        render({file("in.mkv"), file("b." + extension), "--keep-others"});
        EXPECT_TRUE(test::readFile(file("a." + extension)) == test::readFile(file("b." + extension)))
            << extension;
    }
}

TEST_F(Film, CopiesAVideoWhoseTimestampsDoNotGrow) {
    test::makeFilm(file("good.mkv"), {.video_codec = {"-c:v", "mpeg4"}, .audio_codec = {"-c:a", "flac"}});
    // Every fifth frame gets the time of the frame before it.
    test::ffmpeg({"-i", file("good.mkv"), "-c", "copy", "-bsf:v", "setts=ts=if(mod(N\\,5)\\,DTS\\,DTS-40)",
                  file("in.mkv")});
    const auto report = render({file("in.mkv"), file("out.mp4")});
    EXPECT_EQ(test::packets(file("out.mp4"), "v:0").size(), 75U);
    EXPECT_THAT(report["notes"].get<std::vector<std::string>>(), Contains(HasSubstr("timestamps")));
}

}  // namespace
