// Standard output as destination.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "end_to_end/media/film.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

class PipeOutput : public test::RenderTest {
  protected:
    // Renders through a pipe into a file, as `sonivex render IN - OPTIONS | cat > OUT` does.
    void renderThroughPipe(const std::string& input, const std::string& destination,
                           const std::vector<std::string>& options, const std::string& output) {
        std::vector<std::string> all = {
            "bash", "-c", "set -o pipefail; out=$1; shift; \"$@\" | cat > \"$out\"", "bash", output};
        std::vector<std::string> arguments = {input, destination, "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto program = command(arguments);
        all.insert(all.end(), program.begin(), program.end());
        const auto result = test::runProcess(all);
        ASSERT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
};

TEST_F(PipeOutput, HoldsWhatAFileWouldHold) {
    const std::string in = file("in.wav");
    test::makeQuietSpeech(in, 2);
    for (const char* format : {"wav", "flac", "mkv", "mp4", "ogg", "opus", "caf"}) {
        SCOPED_TRACE(format);
        render({in, file("file"), "--format", format, "--force"});
        for (const char* destination : {"-", "pipe:1"}) {
            renderThroughPipe(in, destination, {"--format", format}, file("piped"));
            const auto expected = test::decode(file("file"));
            const auto samples = test::decode(file("piped"));
            // Fragments of MP4 state neither the exact beginning nor the exact end of the sound.
            EXPECT_LE(samples.size(), expected.size() + size_t{2 * 2048});
            EXPECT_NE(std::search(samples.begin(), samples.end(), expected.begin(), expected.end()),
                      samples.end());
        }
    }
    EXPECT_THAT(folder_.names(), testing::Not(testing::Contains("-")));
}

TEST_F(PipeOutput, CarriesFilms) {
    test::makeFilm(file("in.mkv"));
    test::makeFilmSpeech(file("speech.wav"));
    for (const char* format : {"mkv", "mp4", "mpegts"}) {
        renderThroughPipe(file("in.mkv"), "-", {"--format", format}, file("out"));
        EXPECT_EQ(test::packets(file("out"), "v:0").size(), 75U) << format;
        EXPECT_NEAR(test::soundAfterPicture(file("out"), file("speech.wav")), 0.0, 0.001) << format;
    }
}

TEST_F(PipeOutput, NeedsAFormat) {
    test::makeQuietSpeech(file("in.wav"), 1);
    const auto result = run({file("in.wav"), "-", "--quiet"});
    EXPECT_EQ(result.exit_code, 9);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("--format"));
}

TEST_F(PipeOutput, RefusesFormatsThatMustBeCompletedAtTheirBeginning) {
    test::makeQuietSpeech(file("in.wav"), 1);
    for (const char* format : {"aiff", "w64"}) {
        const auto result = run({file("in.wav"), "-", "--quiet", "--format", format});
        EXPECT_EQ(result.exit_code, 9) << format;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(format));
    }
}

TEST_F(PipeOutput, CarriesBareSamplesOnRequest) {
    test::makeQuietSpeech(file("in.wav"), 2);
    renderThroughPipe(file("in.wav"), "-", {"--format", "s16le"}, file("bare"));
    render({file("in.wav"), file("out.wav")});
    EXPECT_EQ(test::readFile(file("bare")).size(), test::decode(file("out.wav")).size() * 2);
}

TEST_F(PipeOutput, AReaderThatGoesAwayIsAnError) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "sine=duration=60:sample_rate=48000", "-c:a", "pcm_s16le", file("in.wav")});
    std::vector<std::string> all = {"bash", "-c", "\"$@\" | head -c 1000 > /dev/null; exit ${PIPESTATUS[0]}",
                                    "bash"};
    const auto program = command({file("in.wav"), "-", "--format", "wav", "--quiet"});
    all.insert(all.end(), program.begin(), program.end());
    const auto result = test::runProcess(all);
    EXPECT_EQ(result.exit_code, 7);
    EXPECT_EQ(result.err, "sonivex: cannot write to standard output: Broken pipe\n");
}

TEST_F(PipeOutput, AReaderThatStopsReadingDoesNotBlockASignal) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "sine=duration=60:sample_rate=48000", "-c:a", "pcm_s16le", file("in.wav")});
    std::vector<std::string> all = {
        "bash", "-c", "\"$@\" > >(sleep 30) & program=$!; sleep 2; kill $program; wait $program", "bash"};
    const auto program = command({file("in.wav"), "-", "--format", "wav", "--quiet"});
    all.insert(all.end(), program.begin(), program.end());
    const auto result = test::Process(all).wait(std::chrono::seconds(20));
    EXPECT_EQ(result.exit_code, 143) << result.err;
}

TEST_F(PipeOutput, AClosedStandardOutputIsAnError) {
    test::makeQuietSpeech(file("in.wav"), 1);
    const auto result = runRedirected(">&-", {file("in.wav"), "-", "--format", "wav", "--quiet"});
    EXPECT_EQ(result.exit_code, 7);
    EXPECT_THAT(result.err, HasSubstr("cannot write to standard output"));
}

}  // namespace
