#include "bench_rounds.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sonivex_tool;

// Measures work by fake clocks, which advance only while the work runs.
class BenchRounds : public testing::Test {
  protected:
    // Makes one piece of work on `audio_s` of audio. Its rounds take the times of `cpu_s` in order, then
    // always the last.
    BenchWork taking(std::vector<double> cpu_s, double audio_s) {
        return {.run =
                    [this, times = std::move(cpu_s), next = size_t{0}]() mutable {
                        const double cpu = times[next];
                        if (next + 1 < times.size()) ++next;
                        cpu_now_s_ += cpu;
                        wall_now_s_ += 2.0 * cpu;  // another program uses the other half of the core
                    },
                .audio_s = audio_s};
    }

    std::vector<BenchTiming> take(const std::vector<BenchWork>& works, double limit_s) {
        return takeRounds(works, limit_s,
                          {.cpu_s = [&] { return cpu_now_s_; }, .wall_s = [&] { return wall_now_s_; }},
                          [&] { ++rounds_begun_; });
    }

    double cpu_now_s_ = 100.0;
    double wall_now_s_ = 5.0;
    int rounds_begun_ = 0;
};

TEST_F(BenchRounds, ReportTheMedianWithoutTheWarmUpRound) {
    const auto timings = take({taking({9.0, 0.004, 0.001, 0.002}, 0.5)}, 0.0);
    ASSERT_EQ(timings.size(), 1U);
    EXPECT_EQ(timings[0].rounds, 3);
    EXPECT_NEAR(timings[0].cpu_ms_per_s, 4.0, 1e-6);
    EXPECT_NEAR(timings[0].timesRealTime(), 250.0, 1e-4);
    EXPECT_NEAR(timings[0].core_percent(), 0.4, 1e-7);
}

TEST_F(BenchRounds, ContinueUntilTheWallClockReachesTheLimit) {
    const auto timings = take({taking({0.25}, 1.0)}, 4.75);  // a round takes half a second of wall-clock time
    EXPECT_EQ(timings[0].rounds, 9);                         // besides the warm-up round
    EXPECT_EQ(rounds_begun_, 10);
    EXPECT_NEAR(wall_now_s_, 10.0, 1e-9);
}

TEST_F(BenchRounds, TimeEachWorkSeparately) {
    const auto timings = take({taking({0.1}, 1.0), taking({0.3}, 2.0)}, 0.0);
    ASSERT_EQ(timings.size(), 2U);
    EXPECT_NEAR(timings[0].cpu_ms_per_s, 100.0, 1e-6);
    EXPECT_NEAR(timings[1].cpu_ms_per_s, 150.0, 1e-6);
}

TEST_F(BenchRounds, StopWhenTheCallbackBetweenThemThrows) {
    const BenchClocks clocks = {.cpu_s = [&] { return cpu_now_s_; }, .wall_s = [&] { return wall_now_s_; }};
    int begun = 0;
    const auto interrupt = [&] {
        if (++begun == 3) throw std::runtime_error("enough");
    };
    EXPECT_THROW(takeRounds({taking({1.0}, 1.0)}, 1000.0, clocks, interrupt), std::runtime_error);
    EXPECT_EQ(cpu_now_s_, 102.0);
}

TEST(BenchClocks, SystemClocksAdvanceWhileTheThreadWorks) {
    const BenchClocks clocks = systemClocks();
    const double cpu_before_s = clocks.cpu_s();
    const double wall_before_s = clocks.wall_s();
    volatile double sum = 0.0;
    while (clocks.cpu_s() - cpu_before_s < 0.01) sum = sum + 1.0;
    EXPECT_GE(clocks.wall_s() - wall_before_s, 0.0099);  // a thread gets no more than the wall-clock time
}

}  // namespace
