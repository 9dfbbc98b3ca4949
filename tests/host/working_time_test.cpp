// Checks the working times that a Player reports to its filter's load guard (checkTimeConsume).
#include <time.h>

#include <numeric>

#include "player_fixture.h"

namespace Vorlin::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

nanoseconds cpuTimeOfThisThread() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

void burn(nanoseconds cpu_time) {
    const auto end = cpuTimeOfThisThread() + cpu_time;
    while (cpuTimeOfThisThread() < end) {
    }
}

class PlayerWorkingTime : public PlayerFixture {
  protected:
    uint64_t toldMs() const {
        return std::accumulate(script_->samples_ms.begin(), script_->samples_ms.end(), uint64_t{0});
    }
};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerWorkingTime, testing::Bool(), activity);

TEST_P(PlayerWorkingTime, IsReportedOnceForEveryOutputFrame) {
    script_->keeps = [](const NumberedFrame& frame) { return frame.number % 4 != 0; };
    const auto player = makePlayer();
    player->setVideoFps(25);
    pushFrames(*player, 40);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->samples_ms.size(), 30u);
}

TEST_P(PlayerWorkingTime, IsNotReportedWithoutATimeBudget) {
    const auto player = makePlayer();
    pushFrames(*player, 3);  // no frame rate yet
    EXPECT_EQ(player->drain(), 0);
    player->setVideoFps(25);
    player->setSpeed(0.75);  // truncated to 0
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_TRUE(script_->samples_ms.empty());
    player->setSpeed(1.5);
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->samples_ms.size(), 3u);
}

TEST_P(PlayerWorkingTime, IsNotReportedWhileTheFilterIsBypassed) {
    const auto player = makePlayer();
    player->setVideoFps(25);
    player->setBypass(true);
    pushFrames(*player, 5);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_TRUE(script_->samples_ms.empty());
}

TEST_F(PlayerWorkingTime, EqualsThePushDurationOfAnInactiveFilter) {
    script_->work = [] { qf_msleep(12); };
    const auto player = makePlayer(false);
    player->setVideoFps(25);
    pushFrames(*player, 3);
    ASSERT_EQ(script_->samples_ms.size(), 3u);
    for (const uint64_t sample : script_->samples_ms) EXPECT_GE(sample, 12u);
}

TEST_F(PlayerWorkingTime, EqualsTheProcessorTimeOfAnActiveFilterWithoutRoundingLoss) {
    constexpr int kFrames = 20;
    constexpr nanoseconds kWork = std::chrono::microseconds(3400);
    script_->work = [=] { burn(kWork); };
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    pushFrames(*player, kFrames);
    EXPECT_EQ(player->drain(), 0);
    const nanoseconds used = script_->worker_clock->cpuTime();
    ASSERT_EQ(script_->samples_ms.size(), static_cast<size_t>(kFrames));
    EXPECT_GE(milliseconds(toldMs()), kFrames * kWork - milliseconds(1))
        << "fractions of a millisecond were lost";
    EXPECT_LE(milliseconds(toldMs()), used) << "the reports exceed the processor time used";
}

TEST_F(PlayerWorkingTime, ExcludesTheSleepsOfAnActiveFilter) {
    script_->work = [] { qf_msleep(30); };
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    pushFrames(*player, 5);
    EXPECT_EQ(player->drain(), 0);
    ASSERT_EQ(script_->samples_ms.size(), 5u);
    EXPECT_LT(toldMs(), 5u * 30u / 2u);
}

TEST_F(PlayerWorkingTime, ForgetsTheTimeOfADroppedFrameAfterADrain) {
    const auto player = makePlayer(true);
    player->setVideoFps(25);
    player->setBypass(true);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    script_->keeps = [](const NumberedFrame& frame) {
        if (frame.number == 1) burn(milliseconds(40));
        return frame.number != 1;
    };
    player->setBypass(false);
    pushFrames(*player, 1);  // uses processor time, then the filter gives the frame up
    EXPECT_EQ(player->drain(), 0);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    ASSERT_EQ(script_->samples_ms.size(), 1u);
    EXPECT_LT(script_->samples_ms[0], 20u);
}

}  // namespace
}  // namespace Vorlin::test
