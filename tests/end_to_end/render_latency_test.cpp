// The rendered file does not depend on the filter's delay or its call size.

#include <gtest/gtest.h>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"
#include "support/signals/signal_matchers.h"

namespace {

class RenderLatency : public test::RenderTest {
  protected:
    RenderLatency() { test::makeQuietSpeech(file("in.wav"), 2); }

    std::string rendered(const std::string& name, const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {file("in.wav"), file(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        report_ = render(arguments);
        return test::readFile(file(name));
    }

    nlohmann::json report_;
};

TEST_F(RenderLatency, EveryCallSizeGivesTheSameFile) {
    const std::string expected = rendered("out.wav", {});
    EXPECT_EQ(report_["delay_frames"], 0);
    const std::vector<std::pair<int, int>> delays = {{64, 448}, {256, 256}, {512, 0}, {768, 768}, {4096, 0}};
    for (const auto& [size, delay] : delays) {
        EXPECT_TRUE(rendered("out" + std::to_string(size) + ".wav", {"--frame-size", std::to_string(size)}) ==
                    expected)
            << size;
        EXPECT_EQ(report_["delay_frames"], delay) << size;
    }
}

TEST_F(RenderLatency, RawLatencyKeepsTheDelayAndChangesNothingElse) {
    rendered("out.wav", {});
    rendered("raw.wav", {"--raw-latency", "--frame-size", "256"});
    EXPECT_EQ(report_["delay_removed"], false);
    const auto aligned = test::decode(file("out.wav"));
    const auto raw = test::decode(file("raw.wav"));
    const size_t delay = 256 * 2;
    ASSERT_EQ(raw.size(), aligned.size() + delay);
    EXPECT_EQ(std::vector<float>(raw.begin(), raw.begin() + delay), std::vector<float>(delay, 0.0F));
    EXPECT_TRUE(test::sameSignal(std::vector<float>(raw.begin() + delay, raw.end()), aligned));
}

TEST_F(RenderLatency, RejectsACallSizeThatWouldCauseGaps) {
    const auto result = run({file("in.wav"), file("out.wav"), "--frame-size", "300"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(folder_.names(), std::vector<std::string>{"in.wav"});
}

TEST_F(RenderLatency, RendersAFileOfThreeFrames) {
    test::ffmpeg(
        {"-i", file("in.wav"), "-af", "atrim=start_sample=20000:end_sample=20003", file("short.wav")});
    render({file("short.wav"), file("out.wav")});
    EXPECT_EQ(test::decode(file("out.wav")).size(), 6U);
}

}  // namespace
