// The filter's own thread renders the same file as the program's.
#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

class RenderThreaded : public test::RenderTest {
  protected:
    RenderThreaded() { test::makeQuietSpeech(file("in.wav"), 2); }

    std::string rendered(const std::string& name, const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {file("in.wav"), file(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        render(arguments);
        return test::readFile(file(name));
    }
};

TEST_F(RenderThreaded, GivesTheSameFileAsWithoutAThread) {
    const std::string expected = rendered("out.wav", {});
    EXPECT_TRUE(rendered("threaded.wav", {"--threaded"}) == expected);
    EXPECT_TRUE(rendered("threaded256.wav", {"--threaded", "--frame-size", "256"}) == expected);
}

}  // namespace
