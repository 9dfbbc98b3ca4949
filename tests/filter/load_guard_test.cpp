// The two guards, and what they tell the player.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "filter_under_test.h"

namespace test {
namespace {

using Vorlin::filterPrototype;

const std::string kOver = std::string("SonivexFilter:") + filterPrototype::FILTER_INVALID_OVER_FPS;
const std::string kRecovery = std::string("SonivexFilter:") + filterPrototype::FILTER_VALID_RECOVERY;
const std::string kPerformance = std::string("SonivexFilter:") + filterPrototype::FILTER_INVALID_PERFORMANCE;

class LoadGuard : public ::testing::Test {
  protected:
    LoadGuard() {
        filter->setInvalid(false);
        filter->setDCA([this](int code, const std::string& event) {
            EXPECT_EQ(code, 0);
            events.push_back(event);
        });
    }
    void fps(const std::string& value) { filter->setOption(filterPrototype::VIDEO_FPS_OPTION, value, ""); }
    void speed(const std::string& value) {
        filter->setOption(filterPrototype::PLAYER_SPEED_OPTION, value, "");
    }

    FilterUnderTest filter;
    std::vector<std::string> events;
};

TEST_F(LoadGuard, SixtyFramesASecondAreNotOverAndSixtyTwoAre) {
    speed("2");
    fps("30");
    EXPECT_FALSE(filter->isOverFps());
    EXPECT_TRUE(events.empty());
    fps("31");
    EXPECT_EQ(events, std::vector<std::string>{kOver});
    fps("31");
    EXPECT_EQ(events.size(), 1u) << "each crossing is reported once";
    EXPECT_TRUE(filter->isOverFps());
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(LoadGuard, RecoveryIsReportedOnceBelowTheLimit) {
    fps("62");
    fps("61");
    EXPECT_EQ(events, (std::vector<std::string>{kOver, kRecovery}));
    fps("25");
    EXPECT_EQ(events.size(), 2u);
}

TEST_F(LoadGuard, AnInvalidFilterHearsOfTheRateAndSaysNothing) {
    filter->setInvalid(true);
    fps("120");
    EXPECT_TRUE(filter.field(Peer::overFps));
    fps("25");
    EXPECT_FALSE(filter.field(Peer::overFps));
    for (int i = 0; i < 50; ++i) filter->checkTimeConsume(1000);
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(filter.field(Peer::costWindow).empty());
}

TEST_F(LoadGuard, AProductBeyondAnIntIsOver) {
    speed("2147483647");
    fps("2147483647");
    EXPECT_TRUE(filter->isOverFps());
    filter->checkTimeConsume(5);  // a budget of 0 ms
    fps("-2147483648");
    EXPECT_FALSE(filter->isOverFps());
}

TEST_F(LoadGuard, TripsAtTheEleventhCallOfTheWorkedExample) {
    fps("25");  // budget 40 ms, threshold 30 ms, limit 25 ms²
    for (int call = 1; call <= 10; ++call) {
        filter->checkTimeConsume(36);
        ASSERT_TRUE(events.empty()) << call;
    }
    EXPECT_EQ(filter.field(Peer::costSum), 252u);
    EXPECT_EQ(filter.field(Peer::costWindow).size(), 10u);
    filter->checkTimeConsume(36);
    EXPECT_EQ(events, std::vector<std::string>{kPerformance});
    EXPECT_TRUE(filter.field(Peer::invalid));
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
    EXPECT_TRUE(filter.field(Peer::costWindow).empty());
}

TEST_F(LoadGuard, IgnoresTheFirstThreeSamplesAfterAReset) {
    fps("25");
    for (int call = 0; call < 3; ++call) filter->checkTimeConsume(100000);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
    filter->checkTimeConsume(100000);
    EXPECT_EQ(events.size(), 1u);
    filter->setInvalid(false);
    for (int call = 0; call < 3; ++call) filter->checkTimeConsume(100000);
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(LoadGuard, TimesUpToThreeQuartersOfTheBudgetCostNothing) {
    fps("25");
    for (int call = 0; call < 100; ++call) filter->checkTimeConsume(30);
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
    EXPECT_TRUE(events.empty());
}

TEST_F(LoadGuard, TheOldestSampleLeavesTheSum) {
    fps("25");
    for (int call = 0; call < 3; ++call) filter->checkTimeConsume(0);
    filter->checkTimeConsume(35);  // 25 ms²
    EXPECT_EQ(filter.field(Peer::costSum), 25u);
    for (int call = 0; call < 9; ++call) filter->checkTimeConsume(0);
    EXPECT_EQ(filter.field(Peer::costSum), 25u);
    filter->checkTimeConsume(0);
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
}

TEST_F(LoadGuard, HugeTimesSaturateInsteadOfOverflowing) {
    fps("25");
    for (int call = 0; call < 4; ++call) filter->checkTimeConsume(std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(events, std::vector<std::string>{kPerformance});
}

TEST_F(LoadGuard, WithoutAFrameRateOrSpeedNothingIsStored) {
    for (const char* rate : {"0", "-25"}) {
        fps(rate);
        for (int call = 0; call < 20; ++call) filter->checkTimeConsume(1000);
        EXPECT_TRUE(filter.field(Peer::costWindow).empty()) << rate;
    }
    fps("25");
    speed("0.75");
    filter->checkTimeConsume(1000);
    EXPECT_TRUE(filter.field(Peer::costWindow).empty());
}

TEST_F(LoadGuard, FlushForgetsTheHistory) {
    fps("25");
    for (int call = 0; call < 8; ++call) filter->checkTimeConsume(33);
    EXPECT_NE(filter.field(Peer::costSum), 0u);
    filter->flush();
    EXPECT_EQ(filter.field(Peer::costSum), 0u);
    EXPECT_TRUE(filter.field(Peer::costWindow).empty());
}

TEST_F(LoadGuard, OverloadWithoutACallbackRaisesTheBadCallException) {
    filter->setDCA({});
    fps("25");
    for (int call = 0; call < 3; ++call) filter->checkTimeConsume(0);
    EXPECT_THROW(filter->checkTimeConsume(1000), std::bad_function_call);
    EXPECT_TRUE(filter.field(Peer::invalid));
}

TEST_F(LoadGuard, WithoutACallbackTheFrameRateIsStillWatched) {
    filter->setDCA({});
    fps("100");
    EXPECT_TRUE(filter.field(Peer::overFps));
}

TEST_F(LoadGuard, ACallbackMayReplaceItself) {
    int second = 0;
    filter->setDCA([this, &second](int, const std::string&) {
        filter->setDCA([&second](int, const std::string&) { ++second; });
    });
    fps("62");
    fps("10");
    EXPECT_EQ(second, 1);
}

TEST_F(LoadGuard, SetInvalidLogsOnlyAChange) {
    LogCapture log;
    filter->setInvalid(false);
    EXPECT_TRUE(log.lines().empty());
    filter->setInvalid(true);
    filter->setInvalid(true);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"32 filter set invalid 1"});
}

}  // namespace
}  // namespace test
