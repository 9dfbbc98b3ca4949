// Checks the filter's guards against overload, by video frame rate and by processing time, and their events.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "filter/faults/filter_under_test.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::filterPrototype;

const std::string kOver = std::string("SonivexFilter:") + filterPrototype::FILTER_INVALID_OVER_FPS;
const std::string kRecovery = std::string("SonivexFilter:") + filterPrototype::FILTER_VALID_RECOVERY;
const std::string kPerformance = std::string("SonivexFilter:") + filterPrototype::FILTER_INVALID_PERFORMANCE;

class FilterLoadGuard : public ::testing::Test {
  protected:
    FilterLoadGuard() {
        filter_->setInvalid(false);
        filter_->setDCA([this](int code, const std::string& event) {
            EXPECT_EQ(code, 0);
            events_.push_back(event);
        });
    }
    void fps(const std::string& value) { filter_->setOption(filterPrototype::VIDEO_FPS_OPTION, value, ""); }
    void speed(const std::string& value) {
        filter_->setOption(filterPrototype::PLAYER_SPEED_OPTION, value, "");
    }

    FilterUnderTest filter_;
    std::vector<std::string> events_;
};

TEST_F(FilterLoadGuard, AllowsSixtyFramesPerSecondButNotSixtyTwo) {
    speed("2");
    fps("30");
    EXPECT_FALSE(filter_->isOverFps());
    EXPECT_TRUE(events_.empty());
    fps("31");
    EXPECT_EQ(events_, std::vector<std::string>{kOver});
    fps("31");
    EXPECT_EQ(events_.size(), 1u) << "the guard reports each crossing once";
    EXPECT_TRUE(filter_->isOverFps());
    EXPECT_EQ(events_.size(), 1u);
}

TEST_F(FilterLoadGuard, ReportsRecoveryOnceBelowTheLimit) {
    fps("62");
    fps("61");
    EXPECT_EQ(events_, (std::vector<std::string>{kOver, kRecovery}));
    fps("25");
    EXPECT_EQ(events_.size(), 2u);
}

TEST_F(FilterLoadGuard, TracksTheFrameRateWithoutEventsWhileInvalid) {
    filter_->setInvalid(true);
    fps("120");
    EXPECT_TRUE(filter_.field(Peer::kOverFps));
    fps("25");
    EXPECT_FALSE(filter_.field(Peer::kOverFps));
    for (int i = 0; i < 50; ++i) filter_->checkTimeConsume(1000);
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(filter_.field(Peer::kCostWindow).empty());
}

TEST_F(FilterLoadGuard, TreatsAProductBeyondAnIntAsOverTheLimit) {
    speed("2147483647");
    fps("2147483647");
    EXPECT_TRUE(filter_->isOverFps());
    filter_->checkTimeConsume(5);  // the time budget is 0 ms
    fps("-2147483648");
    EXPECT_FALSE(filter_->isOverFps());
}

TEST_F(FilterLoadGuard, TripsAtTheEleventhCallSixMillisecondsOverTheThreshold) {
    fps("25");  // budget 40 ms, threshold 30 ms, limit 25 ms²
    for (int call = 1; call <= 10; ++call) {
        filter_->checkTimeConsume(36);
        ASSERT_TRUE(events_.empty()) << call;
    }
    EXPECT_EQ(filter_.field(Peer::kCostSum), 252u);
    EXPECT_EQ(filter_.field(Peer::kCostWindow).size(), 10u);
    filter_->checkTimeConsume(36);
    EXPECT_EQ(events_, std::vector<std::string>{kPerformance});
    EXPECT_TRUE(filter_.field(Peer::kInvalid));
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
    EXPECT_TRUE(filter_.field(Peer::kCostWindow).empty());
}

// The budget is a whole number of milliseconds, and so are three quarters and an eighth of it.
struct GuardAtRate {
    const char* fps;
    uint64_t threshold_ms;                 // 3/4 of 1000 / fps, with both divisions cut
    std::vector<uint64_t> largest_excess;  // ms; nine more squares than ten times the limit
};

class FilterLoadGuardAtRate : public FilterLoadGuard, public ::testing::WithParamInterface<GuardAtRate> {
  protected:
    void takeOver(uint64_t excess_ms) { filter_->checkTimeConsume(GetParam().threshold_ms + excess_ms); }
};

INSTANTIATE_TEST_SUITE_P(
    Rates, FilterLoadGuardAtRate,
    ::testing::Values(GuardAtRate{"23.976", 32, {1, 1, 1, 16}},  // budget 43 ms, limit 25 ms², so 259
                      GuardAtRate{"24", 30, {1, 1, 1, 16}},      // 41 ms
                      GuardAtRate{"25", 30, {1, 1, 1, 16}},      // 40 ms
                      GuardAtRate{"29.97", 25, {13}},            // 34 ms, 16 ms², 169
                      GuardAtRate{"30", 24, {13}},               // 33 ms
                      GuardAtRate{"47.952", 15, {7}},            // 21 ms, 4 ms², 49
                      GuardAtRate{"50", 15, {7}},                // 20 ms
                      GuardAtRate{"59.94", 12, {7}},             // 16 ms
                      GuardAtRate{"61", 12, {7}}),               // 16 ms
    [](const auto& parameter) {
        std::string name = parameter.param.fps;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

TEST_P(FilterLoadGuardAtRate, CountsTheTimeBeyondThreeQuartersOfTheBudget) {
    fps(GetParam().fps);
    for (int call = 0; call < 3; ++call) takeOver(0);
    takeOver(0);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
    takeOver(1);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 1u);
    takeOver(2);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 5u);
}

TEST_P(FilterLoadGuardAtRate, TripsOnceTheWholeMeanExceedsTheSquareOfAnEighthOfTheBudget) {
    fps(GetParam().fps);
    for (int call = 0; call < 10; ++call) takeOver(0);
    for (const uint64_t excess_ms : GetParam().largest_excess) takeOver(excess_ms);
    EXPECT_EQ(filter_.field(Peer::kCostSum) % 10, 9u) << "one more square millisecond must matter";
    EXPECT_TRUE(events_.empty()) << "the mean is cut to the limit";
    takeOver(1);
    EXPECT_EQ(events_, std::vector<std::string>{kPerformance});
}

TEST_F(FilterLoadGuard, IgnoresTheFirstThreeSamplesAfterAReset) {
    fps("25");
    for (int call = 0; call < 3; ++call) filter_->checkTimeConsume(100000);
    EXPECT_TRUE(events_.empty());
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
    filter_->checkTimeConsume(100000);
    EXPECT_EQ(events_.size(), 1u);
    filter_->setInvalid(false);
    for (int call = 0; call < 3; ++call) filter_->checkTimeConsume(100000);
    EXPECT_EQ(events_.size(), 1u);
}

TEST_F(FilterLoadGuard, ToleratesTimesUpToThreeQuartersOfTheBudget) {
    fps("25");
    for (int call = 0; call < 100; ++call) filter_->checkTimeConsume(30);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
    EXPECT_TRUE(events_.empty());
}

TEST_F(FilterLoadGuard, DropsTheOldestSampleFromTheSum) {
    fps("25");
    for (int call = 0; call < 3; ++call) filter_->checkTimeConsume(0);
    filter_->checkTimeConsume(35);  // 25 ms²
    EXPECT_EQ(filter_.field(Peer::kCostSum), 25u);
    for (int call = 0; call < 9; ++call) filter_->checkTimeConsume(0);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 25u);
    filter_->checkTimeConsume(0);
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
}

TEST_F(FilterLoadGuard, SaturatesHugeTimesInsteadOfOverflowing) {
    fps("25");
    for (int call = 0; call < 4; ++call) filter_->checkTimeConsume(std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(events_, std::vector<std::string>{kPerformance});
}

TEST_F(FilterLoadGuard, StoresNothingWithoutAFrameRateOrSpeed) {
    for (const char* rate : {"0", "-25"}) {
        fps(rate);
        for (int call = 0; call < 20; ++call) filter_->checkTimeConsume(1000);
        EXPECT_TRUE(filter_.field(Peer::kCostWindow).empty()) << rate;
    }
    fps("25");
    speed("0.75");
    filter_->checkTimeConsume(1000);
    EXPECT_TRUE(filter_.field(Peer::kCostWindow).empty());
}

TEST_F(FilterLoadGuard, ForgetsItsHistoryOnFlush) {
    fps("25");
    for (int call = 0; call < 8; ++call) filter_->checkTimeConsume(33);
    EXPECT_NE(filter_.field(Peer::kCostSum), 0u);
    filter_->flush();
    EXPECT_EQ(filter_.field(Peer::kCostSum), 0u);
    EXPECT_TRUE(filter_.field(Peer::kCostWindow).empty());
}

TEST_F(FilterLoadGuard, ThrowsBadFunctionCallForAnOverloadWithoutACallback) {
    filter_->setDCA({});
    fps("25");
    for (int call = 0; call < 3; ++call) filter_->checkTimeConsume(0);
    EXPECT_THROW(filter_->checkTimeConsume(1000), std::bad_function_call);
    EXPECT_TRUE(filter_.field(Peer::kInvalid));
}

TEST_F(FilterLoadGuard, WatchesTheFrameRateEvenWithoutACallback) {
    filter_->setDCA({});
    fps("100");
    EXPECT_TRUE(filter_.field(Peer::kOverFps));
}

TEST_F(FilterLoadGuard, AllowsACallbackToReplaceItself) {
    int second = 0;
    filter_->setDCA([this, &second](int, const std::string&) {
        filter_->setDCA([&second](int, const std::string&) { ++second; });
    });
    fps("62");
    fps("10");
    EXPECT_EQ(second, 1);
}

TEST_F(FilterLoadGuard, SetInvalidLogsOnlyAChange) {
    HostLogCapture log;
    filter_->setInvalid(false);
    EXPECT_TRUE(log.lines().empty());
    filter_->setInvalid(true);
    filter_->setInvalid(true);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"32 filter set invalid 1"});
}

}  // namespace
}  // namespace test
