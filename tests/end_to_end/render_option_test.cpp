// Options of render that would have no use are refused, and effects form a chain.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::HasSubstr;

class RenderOption : public test::RenderTest {
  protected:
    RenderOption() { test::makeQuietSpeech(file("in.wav"), 2); }

    void expectRefusal(const std::vector<std::string>& options, const std::string& part) {
        std::vector<std::string> arguments = {file("in.wav"), file("out.wav")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto result = run(arguments);
        EXPECT_EQ(result.exit_code, 2) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(part));
        EXPECT_EQ(folder_.names(), std::vector<std::string>{"in.wav"});
    }
};

TEST_F(RenderOption, AnOptionWithoutItsEffectIsRefused) {
    expectRefusal({"--voice", "3"}, "--voice belongs to dialogue, and the effect is normalizer");
    expectRefusal({"--effect", "dialogue", "--type", "MegaBass"}, "--type belongs to surround");
    expectRefusal({"--no-limiter"}, "--no-limiter belongs to surround");
    expectRefusal({"--effect", "surround", "--mode", "3"}, "--mode belongs to the type MegaBass");
}

// The filter bypasses itself at such a rate, and OUT would be the same as IN.
TEST_F(RenderOption, AVideoTooFastForTheFilterIsRefused) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--fps", "62"}, {"--fps", "120"}, {"--fps", "31.9", "--speed", "2.5"}})
        expectRefusal(options, "--fps times --speed, both cut to whole numbers, must be below 62");
    expectRefusal({"--effect", "dialogue,normalizer", "--fps", "62"}, "--fps");
}

TEST_F(RenderOption, AVideoJustSlowEnoughChangesNothing) {
    render({file("in.wav"), file("plain.wav")});
    int number = 0;
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--fps", "61.9"}, {"--fps", "30.9", "--speed", "2.9"}}) {
        const std::string out = file("fps" + std::to_string(number++) + ".wav");
        std::vector<std::string> arguments = {file("in.wav"), out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto report = render(arguments);
        // On a busy machine a call may take too long for the video.
        if (report["frames_bypassed"] == 0) {
            EXPECT_TRUE(test::readFile(out) == test::readFile(file("plain.wav")));
        }
    }
}

TEST_F(RenderOption, AChainGivesWhatItsEffectsGiveOneAfterTheOther) {
    render({file("in.wav"), file("dialogue.wav"), "--effect", "dialogue", "--voice", "2"});
    render({file("dialogue.wav"), file("both.wav"), "--effect", "normalizer"});
    const auto report =
        render({file("in.wav"), file("chain.wav"), "--effect", "dialogue,normalizer", "--voice", "2"});
    EXPECT_EQ(report["effect"], "dialogue,normalizer");
    EXPECT_TRUE(test::readFile(file("chain.wav")) == test::readFile(file("both.wav")));
    render({file("in.wav"), file("turned.wav"), "--effect", "normalizer,dialogue", "--voice", "2"});
    EXPECT_FALSE(test::readFile(file("turned.wav")) == test::readFile(file("both.wav")));
}

TEST_F(RenderOption, WithoutMeasuringTheSummaryHasNoLoudness) {
    EXPECT_FALSE(render({file("in.wav"), file("a.wav")})["output"]["integrated_lufs"].is_null());
    const auto report = render({file("in.wav"), file("b.wav"), "--no-measure"});
    EXPECT_TRUE(report["output"]["integrated_lufs"].is_null());
    EXPECT_TRUE(test::readFile(file("a.wav")) == test::readFile(file("b.wav")));
}

}  // namespace
