// Audio stays in step with its timestamps: late starts, gaps and overlaps.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "end_to_end/media/decoded_input.h"
#include "end_to_end/media/media.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class TimelineOfAFile : public test::ReadingTest {
  protected:
    // Makes a film whose picture begins at 0 and whose sound begins at 1.5 s.
    std::string makeLateFilm(const std::string& name, const std::vector<std::string>& codec) {
        test::makeNoise(file("noise.wav"), 2);
        std::vector<std::string> arguments = {
            "-f",         "lavfi", "-i",   "testsrc=duration=4:size=64x64:rate=25",
            "-itsoffset", "1.5",   "-i",   file("noise.wav"),
            "-map",       "0:v",   "-map", "1:a"};
        arguments.insert(arguments.end(), codec.begin(), codec.end());
        arguments.push_back(file(name));
        test::ffmpeg(arguments);
        return file(name);
    }
};

size_t leadingZeros(const std::vector<int16_t>& samples) {
    const auto first = std::find_if(samples.begin(), samples.end(), [](int16_t x) { return x != 0; });
    return static_cast<size_t>(first - samples.begin());
}

TEST_F(TimelineOfAFile, LateAudioBeginsWithSilence) {
    const auto sound = [&] { return test::decode16(file("noise.wav")); };
    for (const auto& [name, codec] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"late.mkv", {"-c:v", "mpeg4", "-c:a", "flac"}},
             {"late.mov", {"-c:v", "mpeg4", "-c:a", "pcm_s16le"}}}) {
        SCOPED_TRACE(name);
        const std::string film = makeLateFilm(name, codec);
        const auto read = readInput(film);
        EXPECT_EQ(read.exit_code, 0);
        EXPECT_THAT(read.notes, HasSubstr("begins late; 1.5"));
        // ffmpeg's own way to follow the timestamps.
        const auto expected = test::decode16(film, {"-af", "aresample=async=1:first_pts=0"});
        EXPECT_NEAR(static_cast<double>(leadingZeros(read.samples)),
                    static_cast<double>(leadingZeros(expected)), 2.0 * 48);
        EXPECT_NEAR(static_cast<double>(leadingZeros(read.samples)), 2.0 * 72000, 2.0 * 48);
        const auto trimmed = readInput(film, {"--trim-start"});
        EXPECT_EQ(trimmed.samples, test::decode16(film));
        EXPECT_THAT(trimmed.notes, Not(HasSubstr("begins late")));
        EXPECT_EQ(trimmed.samples, sound());
    }
}

TEST_F(TimelineOfAFile, AudioThatBeginsFarIntoAFilmBeginsWithSilence) {
    test::makeNoise(file("noise.wav"), 3);
    const auto sound = test::decode16(file("noise.wav"));
    for (const auto& [name, codec, start_s] : std::vector<std::tuple<std::string, std::string, size_t>>{
             {"8.mkv", "flac", 8}, {"8.ts", "s302m", 8}}) {
        SCOPED_TRACE(name);
        const std::string start = std::to_string(start_s);
        test::ffmpeg({"-f",         "lavfi",
                      "-i",         "testsrc=duration=" + std::to_string(start_s + 4) + ":size=64x64:rate=5",
                      "-itsoffset", start,
                      "-i",         file("noise.wav"),
                      "-map",       "0:v",
                      "-map",       "1:a",
                      "-c:v",       "mpeg2video",
                      "-r",         "25",
                      "-c:a",       codec,
                      "-strict",    "-2",
                      file(name)});
        const auto read = readInput(file(name));
        EXPECT_EQ(read.exit_code, 0) << read.notes;
        EXPECT_THAT(read.notes, HasSubstr("begins late; "));
        EXPECT_NEAR(static_cast<double>(leadingZeros(read.samples)), static_cast<double>(start_s) * 96000,
                    0.05 * 96000);
        ASSERT_GT(read.samples.size(), sound.size());
        const auto end = read.samples.end() - static_cast<std::ptrdiff_t>(sound.size());
        EXPECT_TRUE(std::equal(end, read.samples.end(), sound.begin()));
        EXPECT_EQ(leadingZeros(read.samples) - leadingZeros(sound), read.samples.size() - sound.size());
    }
}

TEST_F(TimelineOfAFile, SilenceFillsAGap) {
    test::makeNoise(file("noise.wav"), 7);
    const auto whole = test::decode16(file("noise.wav"));
    test::ffmpeg({"-i", file("noise.wav"), "-af", "asetnsamples=480,aselect='not(between(t,2,4.995))'",
                  "-c:a", "pcm_s16le", file("gap.nut")});
    const auto read = readInput(file("gap.nut"));
    EXPECT_EQ(read.exit_code, 0) << read.notes;
    EXPECT_THAT(read.notes, HasSubstr("1 gap; 3.000 s of silence fill it"));
    ASSERT_EQ(read.samples.size(), whole.size());
    auto expected = whole;
    std::fill(expected.begin() + 2 * 96000, expected.begin() + 5 * 96000, int16_t{0});
    EXPECT_EQ(read.samples, expected);

    const auto ignored = readInput(file("gap.nut"), {"--timeline", "ignore"});
    EXPECT_EQ(ignored.samples, test::decode16(file("gap.nut")));
    EXPECT_EQ(ignored.samples.size(), 4U * 96000);
}

TEST_F(TimelineOfAFile, AnOverlapIsCut) {
    // Two parts of two seconds, the second of which begins at 1.5 s.
    test::makeNoise(file("noise.wav"), 4);
    test::ffmpeg({"-i", file("noise.wav"), "-t", "2", "-c:a", "s302m", "-strict", "-2", file("a.ts")});
    test::ffmpeg({"-ss", "2", "-i", file("noise.wav"), "-c:a", "s302m", "-strict", "-2", "-output_ts_offset",
                  "1.5", file("b.ts")});
    test::writeFile(file("in.ts"), test::readFile(file("a.ts")) + test::readFile(file("b.ts")));
    const auto read = readInput(file("in.ts"));
    EXPECT_THAT(read.notes, HasSubstr("overlap in 1 place; 0.500 s of audio were cut"));
    auto expected = test::decode16(file("noise.wav"));
    expected.erase(expected.begin() + 2 * 96000, expected.begin() + 2 * 96000 + 48000);
    EXPECT_EQ(read.samples, expected);
}

TEST_F(TimelineOfAFile, CleanFilesOfAllKindsDecodeAsWithFfmpeg) {
    test::makeNoise(file("noise.wav"), 3);
    const std::vector<std::string> picture = {"-f", "lavfi", "-i", "testsrc=duration=3:size=64x64:rate=25"};
    const std::vector<std::pair<std::string, std::string>> kinds = {
        {"a.flac", "flac"},        {"a.ogg", "flac"},    {"a.wav", "pcm_s16le"},    {"a.aiff", "pcm_s16be"},
        {"a.m4a", "alac"},         {"a.mkv", "flac"},    {"a.avi", "pcm_s16le"},    {"film.mkv", "pcm_s16le"},
        {"film.mov", "pcm_s16le"}, {"film.mp4", "alac"}, {"film.avi", "pcm_s16le"}, {"film.mkv", "flac"}};
    for (const auto& [name, codec] : kinds) {
        SCOPED_TRACE(name + " " + codec);
        std::vector<std::string> arguments = {"-i", file("noise.wav")};
        if (name.starts_with("film")) {
            arguments.insert(arguments.end(), picture.begin(), picture.end());
            arguments.insert(arguments.end(), {"-c:v", "mpeg4"});
        }
        arguments.insert(arguments.end(), {"-c:a", codec, file(name)});
        test::ffmpeg(arguments);
        const auto read = readInput(file(name));
        EXPECT_EQ(read.exit_code, 0);
        EXPECT_EQ(read.report["notes"].size(), 0U) << read.report["notes"];
        EXPECT_EQ(read.samples, test::decode16(file("noise.wav")));
    }
}

TEST_F(TimelineOfAFile, CleanLossyFilesAreAsLongAsWithFfmpeg) {
    test::makeNoise(file("noise.wav"), 3);
    for (const auto& [name, codec] : std::vector<std::pair<std::string, std::string>>{{"a.mp3", "libmp3lame"},
                                                                                      {"a.m4a", "aac"},
                                                                                      {"a.aac", "aac"},
                                                                                      {"a.ogg", "libvorbis"},
                                                                                      {"a.opus", "libopus"},
                                                                                      {"a.mkv", "aac"},
                                                                                      {"b.mkv", "libmp3lame"},
                                                                                      {"a.webm", "libopus"},
                                                                                      {"a.ts", "ac3"},
                                                                                      {"b.ts", "mp2"},
                                                                                      {"a.flv", "aac"},
                                                                                      {"a.avi", "libmp3lame"},
                                                                                      {"a.wma", "wmav2"}}) {
        SCOPED_TRACE(name);
        test::ffmpeg({"-i", file("noise.wav"), "-c:a", codec, file(name)});
        const auto report = render({file(name), file("out.wav"), "--force"});
        EXPECT_EQ(report["notes"].size(), 0U) << report["notes"];
        EXPECT_EQ(report["input"]["frames"], test::decode16(file(name)).size() / 2);
    }
}

}  // namespace
