// Each failure of `sonivex render` has its own exit code, prints one line and leaves no file behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class RenderFailure : public test::RenderTest {
  protected:
    void expectFailure(const std::vector<std::string>& arguments, int exit_code, const std::string& part,
                       const test::ProcessOptions& options = {}) {
        const auto before = folder_.names();
        std::vector<std::string> all = arguments;
        all.emplace_back("--quiet");
        const auto result = run(all, options);
        EXPECT_EQ(result.exit_code, exit_code) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, StartsWith("sonivex: "));
        EXPECT_THAT(result.err, HasSubstr(part));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(folder_.names(), before);
    }
};

TEST_F(RenderFailure, RejectsWrongUsage) {
    const std::string in = file("in.wav");
    const std::string out = file("out.wav");
    expectFailure({}, 2, "IN");
    expectFailure({in}, 2, "OUT");
    expectFailure({in, out, "--no-such-option"}, 2, "--no-such-option");
    expectFailure({in, out, "--effect", "reverb"}, 2, "reverb");
    for (const char* number : {"nan", "inf", "-1", "many", "1e999", ""}) {
        expectFailure({in, out, "--fps", number}, 2, "--fps");
        expectFailure({in, out, "--speed", number}, 2, "--speed");
    }
    expectFailure({in, out, "--voice", "0.5"}, 2, "--voice: must be a finite number of at least 1, not");
    expectFailure({in, out, "--mode", "4"}, 2, "--mode");
    expectFailure({in, out, "--type", "Loud"}, 2, "--type");
    expectFailure({in, out, "--frame-size", "0"}, 2, "--frame-size");
    expectFailure({in, out, "--frame-size", "100000"}, 2, "--frame-size");
    test::makeQuietSpeech(in, 1);
    expectFailure({in, out, "--frame-size", "32", "--threaded"}, 2, "--frame-size of at least 64");
    expectFailure({in, out, "--stream", "-1"}, 2, "--stream");
}

TEST_F(RenderFailure, ReportsAnUnreadableInput) {
    expectFailure({file("none.wav"), file("out.wav")}, 3, "none.wav\": No such file");
    expectFailure({folder_.path(), file("out.wav")}, 3, "is a folder");
    test::writeFile(file("text.wav"), "This is no sound at all.\n");
    expectFailure({file("text.wav"), file("out.wav")}, 3, "text.wav");
    test::writeFile(file("empty.wav"), "");
    expectFailure({file("empty.wav"), file("out.wav")}, 3, "empty.wav");
}

TEST_F(RenderFailure, ReportsAnInputWithoutAudio) {
    test::ffmpeg({"-f", "lavfi", "-i", "testsrc=duration=1:size=64x64", "-c:v", "mpeg4", file("video.mkv")});
    expectFailure({file("video.mkv"), file("out.wav")}, 4, "no audio stream");
    test::makeQuietSpeech(file("in.wav"), 1);
    expectFailure({file("in.wav"), file("out.wav"), "--stream", "1"}, 4, "no audio stream 1, only 0");
}

TEST_F(RenderFailure, RejectsAudioThatTheEffectCannotProcess) {
    test::makeQuietSpeech(file("three.wav"), 3);
    expectFailure({file("three.wav"), file("out.wav"), "--strict"}, 5, "1, 2, 6 or 8 channels, not 3");
    test::makeQuietSpeech(file("rate.wav"), 2, {"-ar", "22050"});
    expectFailure({file("rate.wav"), file("out.wav"), "--strict"}, 5, "16000, 44100 or 48000 Hz, not 22050");
}

TEST_F(RenderFailure, RefusesToOverwriteAnExistingOutput) {
    test::makeQuietSpeech(file("in.wav"), 1);
    test::writeFile(file("out.wav"), "precious");
    expectFailure({file("in.wav"), file("out.wav")}, 6, "--force");
    EXPECT_EQ(test::readFile(file("out.wav")), "precious");
    expectFailure({file("in.wav"), "/dev/null", "--force"}, 6, "not a regular file");
    expectFailure({file("in.wav"), folder_.path(), "--force"}, 6, "is a folder");
    EXPECT_EQ(run({file("in.wav"), file("out.wav"), "--force"}).exit_code, 0);
    EXPECT_NE(test::readFile(file("out.wav")), "precious");
}

TEST_F(RenderFailure, ReportsAnOutputThatCannotBeWritten) {
    test::makeQuietSpeech(file("in.wav"), 1);
    expectFailure({file("in.wav"), file("no/out.wav")}, 7, "no/out.wav\": No such file");
}

TEST_F(RenderFailure, ReportsAFullDisk) {
    test::makeQuietSpeech(file("in.wav"), 2);
    test::ProcessOptions options;
    options.file_size_limit_bytes = 64 * 1024;
    for (const char* name : {"out.wav", "out.flac", "out.aiff"}) {
        expectFailure({file("in.wav"), file(name)}, 8, "\": File too large", options);
    }
}

TEST_F(RenderFailure, KeepsTheOldFileWhenItsReplacementFails) {
    test::makeQuietSpeech(file("in.wav"), 2);
    test::writeFile(file("out.wav"), "precious");
    test::ProcessOptions options;
    options.file_size_limit_bytes = 64 * 1024;
    expectFailure({file("in.wav"), file("out.wav"), "--force"}, 8, "out.wav", options);
    EXPECT_EQ(test::readFile(file("out.wav")), "precious");
}

TEST_F(RenderFailure, RejectsAnUnsuitableOutputFormat) {
    test::makeQuietSpeech(file("in.wav"), 6);
    expectFailure({file("in.wav"), file("out.xyz")}, 9, ".xyz");
    expectFailure({file("in.wav"), file("out.png")}, 9, ".png");
    expectFailure({file("in.wav"), file("out.mp3")}, 9, "mp3 does not support 6 channels");
}

TEST_F(RenderFailure, NamesABitRateThatTheEncoderRefuses) {
    test::makeQuietSpeech(file("in.wav"), 2);
    expectFailure({file("in.wav"), file("out.opus"), "--bitrate", "2M"}, 9,
                  "the encoder of opus refuses --bitrate 2000000 bit/s");
}

TEST_F(RenderFailure, RefusesDescriptorsOtherThanTheStandardOnes) {
    test::makeQuietSpeech(file("in.wav"), 2);
    expectFailure({file("in.wav"), "pipe:2", "--format", "wav"}, 2, "not \"pipe:2\"");
    expectFailure({"pipe:3", file("out.wav")}, 2, "not \"pipe:3\"");
}

TEST_F(RenderFailure, ReportsAMissingPlugin) {
    test::makeQuietSpeech(file("in.wav"), 1);
    expectFailure({file("in.wav"), file("out.wav"), "--plugin", file("none.so")}, 10, "none.so");
    expectFailure({file("in.wav"), file("out.wav"), "--plugin", SONIVEX_HOST_LIBRARY}, 10, "no filter named");
}

// The loader then looks for the plug-in where the system has its libraries, and finds a file that is none.
TEST_F(RenderFailure, ReportsAPluginThatIsNotBesideTheProgram) {
    test::makeQuietSpeech(file("in.wav"), 1);
    std::filesystem::copy_file(SONIVEX_PROGRAM, file("alone"));
    std::filesystem::create_directory(file("libraries"));
    test::writeFile(file("libraries/libSonivexFilter.so"), "no library");
    const auto result = test::runProcess({"env", "LD_LIBRARY_PATH=" + file("libraries"), file("alone"),
                                          "render", file("in.wav"), file("out.wav")});
    EXPECT_EQ(result.exit_code, 10) << result.err;
    EXPECT_THAT(result.err, HasSubstr("cannot load the plug-in: " + file("libraries/libSonivexFilter.so")));
    EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
}

TEST_F(RenderFailure, NamesTheEffectThatThePluginLacks) {
    test::makeQuietSpeech(file("in.wav"), 2);
    for (const char* effect : {"normalizer", "surround", "dialogue"}) {
        expectFailure(
            {file("in.wav"), file("out.wav"), "--effect", effect, "--plugin", SONIVEX_PLUGIN_WITHOUT_EFFECTS},
            11,
            std::string("does not have ") +
                (effect == std::string("normalizer") ? "the normalizer" : effect));
    }
}

}  // namespace
