// Which of several audio streams is rendered.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/decoded_input.h"
#include "end_to_end/media/media.h"

namespace {

using testing::HasSubstr;

class StreamOfAFile : public test::ReadingTest {
  protected:
    void SetUp() override {
        test::makeNoise(file("a.wav"), 1);
        test::makeNoise(file("b.wav"), 2);
        test::makeNoise(file("c.wav"), 1.5);
        test::ffmpeg({"-i",
                      file("a.wav"),
                      "-i",
                      file("b.wav"),
                      "-i",
                      file("c.wav"),
                      "-map",
                      "0",
                      "-map",
                      "1",
                      "-map",
                      "2",
                      "-c",
                      "flac",
                      "-metadata:s:a:0",
                      "language=deu",
                      "-metadata:s:a:1",
                      "language=eng",
                      "-disposition:a:0",
                      "0",
                      "-disposition:a:1",
                      "default",
                      file("film.mkv")});
    }
};

TEST_F(StreamOfAFile, IsTheOneThatTheContainerMarksAsDefault) {
    const auto read = readInput(file("film.mkv"));
    EXPECT_EQ(read.samples, test::decode16(file("b.wav")));
    EXPECT_THAT(read.notes, HasSubstr("audio stream 2 of 3"));
    EXPECT_THAT(read.notes, HasSubstr("eng"));
}

TEST_F(StreamOfAFile, CanBeChosenByNumberOrLanguage) {
    EXPECT_EQ(readInput(file("film.mkv"), {"--stream", "0"}).samples, test::decode16(file("a.wav")));
    EXPECT_EQ(readInput(file("film.mkv"), {"--stream", "de"}).samples, test::decode16(file("a.wav")));
    EXPECT_EQ(readInput(file("film.mkv"), {"--stream", "2"}).samples, test::decode16(file("c.wav")));
}

TEST_F(StreamOfAFile, MustExist) {
    for (const char* wish : {"3", "fra"}) {
        const auto result = run({file("film.mkv"), file("out.wav"), "--quiet", "--stream", wish});
        EXPECT_EQ(result.exit_code, 4);
        EXPECT_THAT(result.err, HasSubstr(std::string("no audio stream ") + wish +
                                          ", only 0 (deu), 1 (eng, default), 2"));
    }
}

}  // namespace
