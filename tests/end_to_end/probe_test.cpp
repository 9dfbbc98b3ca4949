// Looks into files with `sonivex probe`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

class Probe : public test::RenderTest {
  protected:
    static test::ProcessResult probe(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "probe"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::runProcess(command);
    }

    static nlohmann::json probeJson(const std::string& path) {
        const auto result = probe({path, "--json"});
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return nlohmann::json::parse(result.out);
    }

    // Returns what the effect does with an audio stream: "as it is", "converted" or "not".
    static std::string fitOf(const nlohmann::json& stream, const std::string& effect) {
        for (const auto& fit : stream["effects"]) {
            if (fit["effect"] != effect) continue;
            if (!fit["possible"]) return "not";
            return fit["as_it_is"] ? "as it is" : "converted";
        }
        return "missing";
    }

    // Makes a wav file of silence.
    std::string silence(const std::string& layout, const std::string& rate_hz) {
        const std::string path = file(layout + "-" + rate_hz + ".wav");
        test::ffmpeg({"-f", "lavfi", "-i", "anullsrc=d=0.1:cl=" + layout + ":r=" + rate_hz, path});
        return path;
    }
};

TEST_F(Probe, ListsEveryStreamOfAFilmAsFfprobeDoes) {
    test::writeFile(file("words.srt"), "1\n00:00:00,000 --> 00:00:01,000\nHello\n");
    test::ffmpeg({"-f",
                  "lavfi",
                  "-i",
                  "testsrc=d=1:s=64x48",
                  "-f",
                  "lavfi",
                  "-i",
                  "sine=d=1:r=48000",
                  "-f",
                  "lavfi",
                  "-i",
                  "sine=d=1:r=44100",
                  "-i",
                  file("words.srt"),
                  "-map",
                  "0",
                  "-map",
                  "1",
                  "-map",
                  "2",
                  "-map",
                  "3",
                  "-c:v",
                  "mpeg4",
                  "-c:a:0",
                  "flac",
                  "-c:a:1",
                  "aac",
                  "-metadata:s:a:1",
                  "language=fra",
                  "-disposition:a:0",
                  "0",
                  "-disposition:a:1",
                  "default",
                  file("film.mkv")});
    const auto found = probeJson(file("film.mkv"));
    const auto expected = test::probe(file("film.mkv"));
    EXPECT_EQ(found["format"], expected["format"]["format_name"]);
    ASSERT_EQ(found["streams"].size(), expected["streams"].size());
    for (size_t i = 0; i < found["streams"].size(); ++i) {
        const auto& stream = found["streams"][i];
        EXPECT_EQ(stream["kind"], expected["streams"][i]["codec_type"]) << i;
        EXPECT_EQ(stream["codec"], expected["streams"][i]["codec_name"]) << i;
    }
    EXPECT_EQ(found["streams"][0]["width"], 64);
    EXPECT_EQ(found["streams"][1]["chosen"], false);
    EXPECT_EQ(found["streams"][2]["chosen"], true);
    EXPECT_EQ(found["streams"][2]["stream"], 1);
    EXPECT_EQ(found["streams"][2]["language"], "fra");
    EXPECT_EQ(found["streams"][2]["sample_rate_hz"], 44100);
}

TEST_F(Probe, TellsTheStartOfAStreamFromHalfAMillisecondOn) {
    for (const auto& [offset_s, shown] : {std::pair("0.00025", ""), {"0.00075", ", starts at 0.001 s"}}) {
        test::ffmpeg({"-f", "lavfi", "-i", "testsrc=d=0.2:s=64x48", "-itsoffset", offset_s, "-i",
                      silence("stereo", "48000"), "-c:v", "mpeg4", "-c:a", "pcm_s16le", file("late.nut")});
        const auto stream = probeJson(file("late.nut"))["streams"][1];
        EXPECT_NEAR(stream["start_seconds"].get<double>(), std::stod(offset_s), 1e-9);
        EXPECT_THAT(probe({file("late.nut")}).out,
                    HasSubstr(", stereo, s16" + std::string(shown) + "; render reads this one\n"));
    }
}

TEST_F(Probe, NamesWhatIsNeitherSoundNorPicture) {
    test::writeFile(file("note.txt"), "Hello\n");
    test::ffmpeg({"-i", silence("stereo", "48000"), "-attach", file("note.txt"), "-metadata:s:t",
                  "mimetype=text/plain", file("attached.mkv")});
    EXPECT_EQ(probeJson(file("attached.mkv"))["streams"][1]["kind"], "attachment");
    test::ffmpeg({"-f", "lavfi", "-i", "testsrc=d=0.2:s=64x48", "-timecode", "00:00:00:00", "-c:v", "mpeg4",
                  file("timecode.mov")});
    EXPECT_EQ(probeJson(file("timecode.mov"))["streams"][1]["kind"], "data");
}

TEST_F(Probe, ListsAudioThatNothingDecodesWithTheReason) {
    // The number of a codec that nobody has.
    std::string unknown = test::readFile(silence("stereo", "48000"));
    unknown.at(20) = '\x34';
    unknown.at(21) = '\x12';
    test::writeFile(file("unknown.wav"), unknown);
    const auto stream = probeJson(file("unknown.wav"))["streams"][0];
    EXPECT_EQ(stream["kind"], "audio");
    EXPECT_EQ(stream["chosen"], false);
    EXPECT_THAT(stream["problem"].get<std::string>(), HasSubstr("there is no decoder for its audio"));
    EXPECT_TRUE(stream["effects"].empty());
}

TEST_F(Probe, TellsWhichEffectsTakeTheAudioAsItIs) {
    const auto stereo = probeJson(silence("stereo", "48000"))["streams"][0];
    EXPECT_EQ(fitOf(stereo, "normalizer"), "as it is");
    EXPECT_EQ(fitOf(stereo, "surround"), "as it is");
    EXPECT_EQ(fitOf(stereo, "dialogue"), "as it is");
    const auto slow = probeJson(silence("mono", "16000"))["streams"][0];
    EXPECT_EQ(fitOf(slow, "normalizer"), "as it is");
    EXPECT_EQ(fitOf(slow, "surround"), "converted");
    EXPECT_EQ(fitOf(slow, "dialogue"), "converted");
    const auto five = probeJson(silence("5.0", "96000"))["streams"][0];
    EXPECT_EQ(fitOf(five, "normalizer"), "converted");
}

TEST_F(Probe, AgreesWithWhatAStrictRenderTakes) {
    for (const char* layout : {"mono", "stereo", "2.1", "quad", "5.1", "6.1", "7.1"}) {
        for (const char* rate_hz : {"16000", "44100", "96000"}) {
            const std::string path = silence(layout, rate_hz);
            const auto stream = probeJson(path)["streams"][0];
            for (const char* effect : {"normalizer", "surround", "dialogue"}) {
                const auto result = run({path, file("out.wav"), "--force", "--strict", "--effect", effect});
                EXPECT_EQ(result.exit_code == 0, fitOf(stream, effect) == "as it is")
                    << layout << " " << rate_hz << " " << effect << ": " << result.err;
            }
        }
    }
}

TEST_F(Probe, SaysWhyNoEffectTakesTheAudio) {
    // 300 channels have no known loudspeakers.
    std::string header = test::readFile(silence("stereo", "48000"));
    header.at(22) = '\x2c';
    header.at(23) = '\x01';
    header.at(32) = '\x58';
    header.at(33) = '\x02';
    test::writeFile(file("many.wav"), header);
    const auto stream = probeJson(file("many.wav"))["streams"][0];
    EXPECT_EQ(stream["channels"], 300);
    EXPECT_EQ(fitOf(stream, "normalizer"), "not");
    EXPECT_THAT(probe({file("many.wav")}).out, HasSubstr("not at all: "));
}

TEST_F(Probe, FailsAsRenderDoesForWhatIsNoMediaFile) {
    EXPECT_EQ(probe({file("missing.wav")}).exit_code, 3);
    test::writeFile(file("text.txt"), "no audio here");
    EXPECT_EQ(probe({file("text.txt")}).exit_code, 3);
    EXPECT_EQ(probe({"-"}).exit_code, 2);
    EXPECT_EQ(probe({}).exit_code, 2);
}

}  // namespace
