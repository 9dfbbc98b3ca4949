#include "timeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::FramePtr;
using sonivex_tool::Timeline;

class TimelineTest : public testing::Test {
  protected:
    Timeline make(int64_t delay) {
        return {delay, [this](FramePtr frame) {
                    const auto samples = test::floatsOf(*frame);
                    out_.insert(out_.end(), samples.begin(), samples.end());
                }};
    }

    static std::vector<float> countedFrom(float first, size_t count) {
        std::vector<float> numbers(count);
        std::iota(numbers.begin(), numbers.end(), first);
        return numbers;
    }

    std::vector<float> out_;
};

TEST_F(TimelineTest, PassesFramesThroughWithoutADelay) {
    Timeline timeline = make(0);
    timeline.accept(test::countingFrame(0, 100));
    timeline.accept(test::countingFrame(100, 100));
    timeline.finish();
    EXPECT_EQ(out_, countedFrom(0, 200));
    EXPECT_EQ(timeline.filledFrames(), 0);
}

TEST_F(TimelineTest, RemovesADelayThatEndsWithinAFrame) {
    Timeline timeline = make(150);
    for (int i = 0; i < 4; ++i) timeline.accept(test::countingFrame(100 * i, 100));
    EXPECT_EQ(out_, countedFrom(150, 250));
}

TEST_F(TimelineTest, CutsEverythingAfterTheEnd) {
    Timeline timeline = make(10);
    timeline.accept(test::countingFrame(0, 100));
    timeline.setEnd(120);
    timeline.accept(test::countingFrame(100, 100));
    timeline.accept(test::countingFrame(200, 100));
    timeline.finish();
    EXPECT_EQ(out_, countedFrom(10, 120));
}

TEST_F(TimelineTest, BeginsAnewAfterAFlush) {
    Timeline timeline = make(50);
    timeline.accept(test::countingFrame(0, 100));
    timeline.setEnd(60);
    out_.clear();
    timeline.restart();
    timeline.accept(test::countingFrame(0, 100));
    timeline.accept(test::countingFrame(100, 100));
    EXPECT_EQ(out_, countedFrom(50, 150));
}

TEST_F(TimelineTest, FillsAGapWithSilenceAndKeepsTheRestInPlace) {
    Timeline timeline = make(0);
    timeline.accept(test::countingFrame(0, 10));
    timeline.accept(test::countingFrame(30, 10));
    std::vector<float> expected = countedFrom(0, 10);
    expected.insert(expected.end(), 20, 0.0F);
    const auto rest = countedFrom(30, 10);
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(out_, expected);
    EXPECT_EQ(timeline.filledFrames(), 20);
}

TEST_F(TimelineTest, FillsUpToTheEndIfTheLastFramesAreMissing) {
    Timeline timeline = make(0);
    timeline.accept(test::countingFrame(0, 10));
    timeline.setEnd(20'000);
    timeline.finish();
    ASSERT_EQ(out_.size(), 20'000U);
    EXPECT_EQ(out_[9], 9.0F);
    EXPECT_EQ(std::count(out_.begin() + 10, out_.end(), 0.0F), 19'990);
}

}  // namespace
