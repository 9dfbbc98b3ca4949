// Files in which libavformat reads or seeks no more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>

#include "audio_source.h"
#include "failure.h"
#include "media_file.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

int errors_of_reading = 0;  // of the next calls
bool can_seek = true;

}  // namespace

extern "C" int __wrap_av_read_frame(AVFormatContext* file, AVPacket* packet);
extern "C" int __real_av_read_frame(AVFormatContext* file, AVPacket* packet);
extern "C" int __wrap_av_read_frame(AVFormatContext* file, AVPacket* packet) {
    if (errors_of_reading == 0) return __real_av_read_frame(file, packet);
    --errors_of_reading;
    return AVERROR(EIO);
}

extern "C" int __wrap_av_seek_frame(AVFormatContext* file, int stream, int64_t time, int flags);
extern "C" int __real_av_seek_frame(AVFormatContext* file, int stream, int64_t time, int flags);
extern "C" int __wrap_av_seek_frame(AVFormatContext* file, int stream, int64_t time, int flags) {
    return can_seek ? __real_av_seek_frame(file, stream, time, flags) : AVERROR(EIO);
}

namespace {

using namespace sonivex_tool;
using testing::EndsWith;

class ReadingErrors : public testing::Test {
  protected:
    void TearDown() override {
        errors_of_reading = 0;
        can_seek = true;
    }

    // Makes a file of a tone of 1 s, with a picture before it in the second case.
    std::string make(const std::string& name, bool has_picture) {
        std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v", "error"};
        if (has_picture)
            command.insert(command.end(), {"-f", "lavfi", "-i", "testsrc=duration=1:size=64x64:rate=25"});
        command.insert(command.end(), {"-f", "lavfi", "-i", "sine=duration=1:sample_rate=48000"});
        if (has_picture) command.insert(command.end(), {"-map", "0", "-map", "1", "-c:v", "mpeg4"});
        command.insert(command.end(), {"-c:a", "pcm_s16le", folder_.file(name)});
        const auto made = test::runProcess(command);
        EXPECT_EQ(made.exit_code, 0) << made.err;
        return folder_.file(name);
    }

    static int64_t countRest(AudioSource& source) {
        int64_t frames = 0;
        while (const FramePtr frame = source.read()) frames += frame->nb_samples;
        return frames;
    }

    test::TemporaryFolder folder_;
};

TEST_F(ReadingErrors, AFileIsGivenUpThatOnlyFails) {
    MediaFile file(make("a.wav", false));
    errors_of_reading = std::numeric_limits<int>::max();
    const PacketPtr packet(av_packet_alloc());
    EXPECT_FALSE(file.read(*packet));
    EXPECT_TRUE(file.faults().is_given_up);
    EXPECT_EQ(file.faults().errors, 1U) << "errors in a row count once";
}

TEST_F(ReadingErrors, AFileGoesOnAfterAFewErrors) {
    MediaFile file(make("a.wav", false));
    errors_of_reading = 50;
    const PacketPtr packet(av_packet_alloc());
    EXPECT_TRUE(file.read(*packet));
    EXPECT_FALSE(file.faults().is_given_up);
    EXPECT_EQ(file.faults().errors, 1U);
}

TEST_F(ReadingErrors, AFileWithoutASampleIsNoAudio) {
    const std::string path = make("a.wav", false);
    errors_of_reading = std::numeric_limits<int>::max();
    try {
        const AudioSource source({.path = path});
        FAIL() << "it has samples";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::NoAudio);
        EXPECT_EQ(failure.what(), "cannot decode \"" + path + "\": its audio stream yields no samples");
    }
}

TEST_F(ReadingErrors, AFileIsReadAnewIfItCannotSeek) {
    AudioSource source({.path = make("a.mkv", true)});
    EXPECT_EQ(countRest(source), 48000);
    can_seek = false;
    EXPECT_NEAR(source.seek(0.5), 0.5, 0.001);
    EXPECT_NEAR(static_cast<double>(countRest(source)), 24000.0, 48.0);
}

TEST_F(ReadingErrors, AFileThatWasReplacedIsNotReadAnew) {
    const std::string path = make("a.mkv", true);
    AudioSource source({.path = path});
    std::filesystem::rename(make("b.wav", false), path);
    can_seek = false;
    try {
        source.seek(0.5);
        FAIL() << "it reads another file";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::InputNotReadable);
        EXPECT_THAT(failure.what(), EndsWith("it changed meanwhile"));
    }
}

}  // namespace
