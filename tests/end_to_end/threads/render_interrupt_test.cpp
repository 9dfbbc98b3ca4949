#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class RenderInterrupt : public test::RenderTest {
  protected:
    // Starts a render that takes many seconds and signals it while it writes. The process is stopped
    // meanwhile, so all of `signals` are pending when it continues.
    test::ProcessResult interrupt(const std::vector<int>& signals) {
        test::ffmpeg({"-f", "lavfi", "-i", "sine=duration=600:sample_rate=16000", file("in.wav")});
        // The filter's own thread runs at only a few times real time.
        test::Process process(command({file("in.wav"), file("out.wav"), "--threaded", "--quiet"}));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (folder_.names().size() < 2 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(folder_.names().size(), 2U) << "the program created no temporary file within 20 s";
        EXPECT_TRUE(process.isRunning());
        process.send(SIGSTOP);
        for (const int signal : signals) process.send(signal);
        process.send(SIGCONT);
        return process.wait(std::chrono::seconds(20));
    }
};

TEST_F(RenderInterrupt, CtrlCLeavesNoFileBehind) {
    const auto result = interrupt({SIGINT});
    EXPECT_EQ(result.exit_code, 130);
    EXPECT_THAT(result.err, HasSubstr("interrupted"));
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav"));
}

TEST_F(RenderInterrupt, TerminationLeavesNoFileBehind) {
    EXPECT_EQ(interrupt({SIGTERM}).exit_code, 143);
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav"));
}

// The encoder writes on a thread of its own, which must end before its file does.
TEST_F(RenderInterrupt, CtrlCWhileTheEncoderWritesIsNoCrash) {
    test::ffmpeg({"-f", "lavfi", "-i", "sine=duration=7200:sample_rate=16000", file("in.flac")});
    for (int i = 0; i < 8; ++i) {
        test::Process process(command({file("in.flac"), file("out.flac"), "--no-measure", "--quiet"}));
        while (folder_.names().size() < 2 && process.isRunning())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::this_thread::sleep_for(std::chrono::milliseconds(50 + 30 * i));
        process.send(SIGINT);
        EXPECT_EQ(process.wait(std::chrono::seconds(20)).exit_code, 130);
        EXPECT_THAT(folder_.names(), ElementsAre("in.flac"));
    }
}

// A program that hangs never acts on the first signal, so the second one ends it without waiting. The missing
// message shows that it did not wait.
TEST_F(RenderInterrupt, ASecondSignalEndsTheProgramAtOnceAndLeavesNoFileBehind) {
    const auto result = interrupt({SIGINT, SIGTERM});
    EXPECT_THAT(result.exit_code, testing::AnyOf(130, 143));
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav"));
}

}  // namespace
