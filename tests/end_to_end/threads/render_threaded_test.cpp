// The filter's own thread renders the same file as the program's.
#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using RenderThreaded = test::RenderTest;

TEST_F(RenderThreaded, GivesTheSameFileAsWithoutAThread) {
    test::makeQuietSpeech(file("in.wav"), 2);
    render({file("in.wav"), file("out.wav")});
    const std::string expected = test::readFile(file("out.wav"));
    render({file("in.wav"), file("threaded.wav"), "--threaded"});
    EXPECT_TRUE(test::readFile(file("threaded.wav")) == expected);
    render({file("in.wav"), file("threaded256.wav"), "--threaded", "--frame-size", "256"});
    EXPECT_TRUE(test::readFile(file("threaded256.wav")) == expected);
}

}  // namespace
