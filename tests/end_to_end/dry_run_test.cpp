// `render --dry-run` tells what would be done, and writes nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/film.h"
#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class DryRun : public test::RenderTest {};

TEST_F(DryRun, NamesWhatARenderThenDoesWithEachStream) {
    test::makeRichFilm(folder_.path(), file("in.mkv"));
    const auto names_before = folder_.names();
    const auto planned = render({file("in.mkv"), file("out.mp4"), "--dry-run"});
    EXPECT_EQ(folder_.names(), names_before);
    const auto report = render({file("in.mkv"), file("out.mp4")});
    EXPECT_EQ(planned["output"]["audio"]["codec"], report["output"]["codec"]);
    EXPECT_EQ(planned["output"]["audio"]["channel_layout"], report["output"]["channel_layout"]);
    size_t kept = 0;
    for (const auto& stream : planned["output"]["streams"]) kept += stream["fate"] != "left out" ? 1 : 0;
    // MP4 keeps the titles of chapters in a stream of their own.
    size_t written = 0;
    const auto found = test::probe(file("out.mp4"));
    for (const auto& stream : found["streams"]) written += stream["codec_type"] != "data" ? 1 : 0;
    EXPECT_EQ(kept, written);
    const auto text = run({file("in.mkv"), file("new.mp4"), "--dry-run"});
    EXPECT_EQ(text.exit_code, 0);
    EXPECT_THAT(text.out, HasSubstr("rendered"));
    EXPECT_THAT(text.out, HasSubstr("left out"));
}

TEST_F(DryRun, FailsWhereARenderWouldFailAtOnce) {
    test::makeQuietSpeech(file("in.wav"), 2);
    test::writeFile(file("there.wav"), "something");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{file("in.wav"), file("there.wav")},
          {file("in.wav"), file("nowhere/out.wav")},
          {file("in.wav"), file("out.txt")},
          {file("missing.wav"), file("out.wav")},
          {file("in.wav"), file("out.wav"), "--strict", "--rate", "12345"}}) {
        std::vector<std::string> dry = arguments;
        dry.emplace_back("--dry-run");
        const int exit_code = run(arguments).exit_code;
        EXPECT_NE(exit_code, 0);
        EXPECT_EQ(run(dry).exit_code, exit_code) << arguments[1];
    }
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "there.wav"));
}

TEST_F(DryRun, NamesTheTargetLoudness) {
    test::makeQuietSpeech(file("in.wav"), 2);
    const auto text = run({file("in.wav"), file("out.wav"), "--dry-run", "--target-lufs", "-18"});
    EXPECT_THAT(text.out, HasSubstr("-18.0 LUFS"));
    EXPECT_EQ(run({file("in.wav"), file("out.wav"), "--dry-run", "--quiet"}).out, "");
}

}  // namespace
