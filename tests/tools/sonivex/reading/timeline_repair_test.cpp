#include "timeline_repair.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace sonivex_tool;
using Frames = std::vector<Placement>;

constexpr int kRate_hz = 48000;
constexpr int64_t kSecond = kRate_hz;

// Frames of 1024 samples at these positions.
Frames framesAt(const std::vector<int64_t>& positions) {
    Frames frames;
    for (const int64_t position : positions) frames.push_back({position, 1024});
    return frames;
}

// Frames of 1024 samples without a gap.
Frames run(int64_t from, int count) {
    Frames frames;
    for (int i = 0; i < count; ++i) frames.push_back({from + int64_t{1024} * i, 1024});
    return frames;
}

Frames operator+(Frames first, const Frames& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct Total {
    int64_t silence = 0;
    int64_t cut = 0;
    int jumps = 0;
    int overlaps = 0;
    size_t first_correction = 0;  // index of a frame
};

// Places every frame with up to eight frames of foresight.
Total placeAll(const Frames& frames, TimelineRepair repair = TimelineRepair(kRate_hz)) {
    Total total;
    bool is_first = true;
    for (size_t i = 0; i < frames.size(); ++i) {
        const Correction correction =
            repair.place(std::span(frames).subspan(i, std::min<size_t>(9, frames.size() - i)));
        total.silence += correction.silence;
        total.cut += correction.cut;
        total.jumps += correction.is_jump ? 1 : 0;
        total.overlaps += correction.begins_overlap ? 1 : 0;
        if (is_first && (correction.silence > 0 || correction.cut > 0)) {
            total.first_correction = i;
            is_first = false;
        }
    }
    return total;
}

TEST(TimelineRepair, LeavesAContinuousStreamAlone) {
    const Total total = placeAll(run(72000, 100));
    EXPECT_EQ(total.silence, 0);
    EXPECT_EQ(total.cut, 0);
    EXPECT_EQ(total.jumps, 0);
}

TEST(TimelineRepair, FillsAGapBeforeTheFrameThatFollowsIt) {
    // 20 frames end at 20480; the next begins at 20480 + 144000.
    const Total total = placeAll(run(0, 20) + run(20480 + 3 * kSecond, 20));
    EXPECT_EQ(total.silence, 144000);
    EXPECT_EQ(total.cut, 0);
    EXPECT_EQ(total.first_correction, 20U);
}

TEST(TimelineRepair, FillsTheGapOfOneLostPacket) {
    EXPECT_EQ(placeAll(run(0, 20) + run(21 * 1024, 20)).silence, 1024);
}

TEST(TimelineRepair, CutsAnOverlapExactlyAlthoughItSpansFrames) {
    // The clock steps back by 2500 samples: two whole frames and 452 samples of the third are cut.
    const Total total = placeAll(run(0, 40) + run(40 * 1024 - 2500, 20));
    EXPECT_EQ(total.cut, 2500);
    EXPECT_EQ(total.overlaps, 1);
    EXPECT_EQ(total.silence, 0);
    EXPECT_EQ(total.first_correction, 40U);
}

TEST(TimelineRepair, IgnoresTimestampsThatJitter) {
    Frames frames = run(0, 200);
    for (size_t i = 0; i < frames.size(); ++i)
        *frames[i].position += i % 3 == 0 ? 700 : i % 3 == 1 ? -700 : 24;
    const Total total = placeAll(frames);
    EXPECT_EQ(total.silence, 0);
    EXPECT_EQ(total.cut, 0);
}

TEST(TimelineRepair, IgnoresASingleWrongTimestamp) {
    Frames frames = run(0, 60);
    *frames[30].position += 20 * kSecond;
    *frames[40].position -= 5 * kSecond;
    const Total total = placeAll(frames);
    EXPECT_EQ(total.silence + total.cut, 0);
    EXPECT_EQ(total.jumps, 0);
}

TEST(TimelineRepair, CorrectsADriftOnlyOnceItIsNoticeable) {
    // A clock that runs 1 % fast: 10.24 samples a frame, so 40 ms are exceeded after 188 frames.
    Frames frames;
    for (int i = 0; i < 220; ++i) frames.push_back({static_cast<int64_t>(i * 1034.24), 1024});
    const Total total = placeAll(frames);
    EXPECT_GT(total.silence, 1920);
    EXPECT_LT(total.silence, 1920 + 20);
    EXPECT_NEAR(static_cast<double>(total.first_correction), 188.0, 1.0);
}

TEST(TimelineRepair, FollowsNoJumpOfHours) {
    const Total total = placeAll(run(0, 20) + run(7200 * kSecond, 20) + run(7200 * kSecond + 30 * 1024, 20));
    EXPECT_EQ(total.jumps, 1);
    EXPECT_EQ(total.silence, 10 * 1024) << "the clock after the jump counts";
}

TEST(TimelineRepair, KeepsWhatFollowsAClockThatStartsAgain) {
    const Total total = placeAll(run(1000, 100) + run(1000, 100));
    EXPECT_EQ(total.cut, 0);
    EXPECT_EQ(total.jumps, 1);
    EXPECT_EQ(placeAll(run(0, 1000) + run(48000, 100)).jumps, 1) << "a step back of 20 s";
}

TEST(TimelineRepair, FillsNothingBeyondTheStatedEnd) {
    const Frames frames = run(0, 20) + run(300 * kSecond, 20);
    EXPECT_EQ(placeAll(frames).silence, 300 * kSecond - 20480);
    const Total total = placeAll(frames, TimelineRepair(kRate_hz, 100.0));
    EXPECT_EQ(total.silence, 0);
    EXPECT_EQ(total.jumps, 1);
}

TEST(TimelineRepair, FramesWithoutATimestampFollowTheOneBefore) {
    Frames frames = run(0, 5);
    for (int i = 0; i < 15; ++i) frames.push_back({std::nullopt, 1024});
    EXPECT_EQ(placeAll(frames + run(20 * 1024, 10)).silence, 0);
    // A stream that never tells is left alone.
    EXPECT_EQ(placeAll(Frames(50, Placement{std::nullopt, 1024})).silence, 0);
}

TEST(TimelineRepair, FirstTimestampMayComeLate) {
    EXPECT_EQ(placeAll(Frames(2, Placement{std::nullopt, 2048}) + run(4128, 20)).silence, 0);
}

TEST(TimelineRepair, PositionsStayRightAcrossAChangeOfTheRate) {
    TimelineRepair repair(48000);
    (void)repair.place(framesAt({48000 - 1024}));
    repair.setRate(16000);
    // Audio so far ends at 1 s; the next frame begins at 1.5 s.
    EXPECT_EQ(repair.place(framesAt({24000})).silence, 8000);
    EXPECT_NEAR(repair.end_s().value(), 1.5 + 1024.0 / 16000, 1e-9);
}

TEST(TimelineRepair, AnOverlapKeepsItsLengthAcrossAChangeOfTheRate) {
    constexpr size_t kBefore = 100;
    const Frames frames = run(0, kBefore) + run(kBefore * 1024 - 3072, 20);
    TimelineRepair repair(48000);
    Correction last;
    for (size_t i = 0; i <= kBefore; ++i) last = repair.place(std::span(frames).subspan(i, 9));
    EXPECT_TRUE(last.begins_overlap);
    EXPECT_EQ(last.cut, 1024);
    repair.setRate(16000);
    // The rest of the overlap, 2048 frames at 48000 Hz.
    EXPECT_EQ(repair.place(framesAt({0})).cut, 2048 / 3);
}

TEST(TimelineRepair, SurvivesExtremeTimestamps) {
    const int64_t far = int64_t{1000000000} * 768000;
    const Total total = placeAll(framesAt({-far, far, -far, far, 0, far}));
    EXPECT_EQ(total.silence, 0);
}

}  // namespace
