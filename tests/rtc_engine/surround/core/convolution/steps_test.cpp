#include "steps.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex::Snapshot;
using sonivex::Step;
using sonivex::Steps;

void expectSnapshots(const Step& step, const std::vector<Snapshot>& expected) {
    ASSERT_EQ(step.count, expected.size());
    for (std::size_t i = 0; i < step.count; ++i) {
        EXPECT_EQ(step.snapshots[i].block, expected[i].block) << "snapshot " << i;
        EXPECT_EQ(step.snapshots[i].from, expected[i].from) << "snapshot " << i;
        EXPECT_EQ(step.snapshots[i].to, expected[i].to) << "snapshot " << i;
    }
}

// Blocks A, B, C, .. of 256 in calls of 240, cut by hand:
// A 0-240 | A 240-256, B 0-224 | B 224-256, C 0-208 | ..
TEST(ConvolutionSteps, CutCallsOf240WhereBlocksOf256End) {
    Steps steps(256, 0, 240, 4);
    Step step = steps.next();
    expectSnapshots(step, {{0, 0, 240}, {0, 240, 256}, {1, 0, 224}, {1, 224, 256}});
    EXPECT_TRUE(step.beginsABlock());
    EXPECT_TRUE(step.endsWithABlock());
    EXPECT_EQ(step.blocks(), 2U);
    EXPECT_EQ(step.finishedBlocks(), 2U);
    EXPECT_EQ(step.freshBlocks(), 2U);
    EXPECT_EQ(step.firstFill(), 0U);
    EXPECT_EQ(step.lastFill(), 0U);
    EXPECT_EQ(step.frames(), 512U);
    EXPECT_EQ(step.lanes(), 4U);
    step = steps.next();
    expectSnapshots(step, {{0, 0, 208}, {0, 208, 256}, {1, 0, 192}});
    EXPECT_FALSE(step.endsWithABlock());
    EXPECT_EQ(step.finishedBlocks(), 1U);
    EXPECT_EQ(step.lastFill(), 192U);
    EXPECT_EQ(step.frames(), 448U);
    EXPECT_EQ(step.lanes(), 4U);
    EXPECT_FALSE(steps.areLeft());
}

TEST(ConvolutionSteps, ContinueABlockThatAnEarlierCallBegan) {
    Steps one(256, 240, 240, 1);
    Step step = one.next();
    expectSnapshots(step, {{0, 240, 256}, {1, 0, 224}});
    EXPECT_FALSE(step.beginsABlock());
    EXPECT_EQ(step.freshBlocks(), 1U);
    EXPECT_EQ(step.finishedBlocks(), 1U);
    EXPECT_EQ(step.firstFill(), 240U);
    EXPECT_EQ(step.frames(), 240U);
    EXPECT_EQ(step.lanes(), 2U);
    EXPECT_FALSE(one.areLeft());

    Steps two(256, 240, 240, 2);
    step = two.next();
    expectSnapshots(step, {{0, 240, 256}, {1, 0, 224}, {1, 224, 256}, {2, 0, 208}});
    EXPECT_EQ(step.blocks(), 3U);
    EXPECT_EQ(step.freshBlocks(), 2U);
    EXPECT_EQ(step.finishedBlocks(), 2U);
    EXPECT_EQ(step.frames(), 480U);
    EXPECT_FALSE(two.areLeft());
}

// Sixteen calls fill fifteen blocks, so the last call before the pattern repeats ends with its block.
TEST(ConvolutionSteps, RepeatTheCutsOfCallsOf240AfterSixteenCalls) {
    Steps whole_block(256, 16, 240, 1);
    expectSnapshots(whole_block.next(), {{0, 16, 256}});
    EXPECT_FALSE(whole_block.areLeft());
    Steps within(256, 8, 240, 1);
    expectSnapshots(within.next(), {{0, 8, 248}});
    std::size_t fill = 0;
    for (int call = 0; call < 16; ++call) {
        Steps steps(256, fill, 240, 1);
        fill = steps.next().lastFill();
        EXPECT_FALSE(steps.areLeft());
    }
    EXPECT_EQ(fill, 0U);
}

TEST(ConvolutionSteps, RenderAtMostTwoBlocksOfFramesAndBeginAtMostTwoBlocks) {
    Steps long_call(4, 1, 20, 1);
    expectSnapshots(long_call.next(), {{0, 1, 4}, {1, 0, 4}});
    expectSnapshots(long_call.next(), {{0, 0, 4}, {1, 0, 4}});
    expectSnapshots(long_call.next(), {{0, 0, 4}, {1, 0, 1}});
    EXPECT_FALSE(long_call.areLeft());
    Steps shortest_blocks(1, 0, 3, 1);
    expectSnapshots(shortest_blocks.next(), {{0, 0, 1}, {1, 0, 1}});
    expectSnapshots(shortest_blocks.next(), {{0, 0, 1}});
    EXPECT_FALSE(shortest_blocks.areLeft());
    Steps just_two_blocks(8, 5, 8, 2);
    expectSnapshots(just_two_blocks.next(), {{0, 5, 8}, {1, 0, 5}, {1, 5, 8}, {2, 0, 5}});
    EXPECT_FALSE(just_two_blocks.areLeft());
}

TEST(ConvolutionSteps, HaveAtMostFourSnapshots) {
    Steps short_calls(256, 0, 10, 6);
    expectSnapshots(short_calls.next(), {{0, 0, 10}, {0, 10, 20}, {0, 20, 30}, {0, 30, 40}});
    expectSnapshots(short_calls.next(), {{0, 40, 50}, {0, 50, 60}});
    EXPECT_FALSE(short_calls.areLeft());
}

TEST(ConvolutionSteps, AreEmptyWithoutCallsOrFrames) {
    EXPECT_FALSE(Steps(256, 0, 240, 0).areLeft());
    EXPECT_FALSE(Steps(256, 100, 0, 3).areLeft());
}

// Derives the ends of calls and blocks from the frame count and compares the steps with them.
TEST(ConvolutionSteps, RenderEveryFrameOnceAndInOrderForAnyLengths) {
    test::Random random(1);
    for (int round = 0; round < 3000; ++round) {
        const std::size_t block = std::size_t{1} << random.between(0, 8);
        const auto first_fill = static_cast<std::size_t>(random.between(0, static_cast<int>(block) - 1));
        const auto frames = static_cast<std::size_t>(random.between(1, static_cast<int>(3 * block)));
        const auto calls = static_cast<std::size_t>(random.between(1, 7));
        SCOPED_TRACE(std::to_string(calls) + " calls of " + std::to_string(frames) + " from " +
                     std::to_string(first_fill) + " of " + std::to_string(block));
        Steps steps(block, first_fill, frames, calls);
        std::size_t rendered = 0;
        while (steps.areLeft()) {
            const Step step = steps.next();
            ASSERT_GE(step.count, 1U);
            ASSERT_LE(step.count, sonivex::kMaxSnapshots);
            ASSERT_EQ(step.block_frames, block);
            ASSERT_EQ(step.firstFill(), (first_fill + rendered) % block);
            const std::size_t before_step = rendered;
            std::size_t begun = 0;
            std::size_t finished = 0;
            std::size_t current = 0;
            for (std::size_t i = 0; i < step.count; ++i) {
                const Snapshot& snapshot = step.snapshots[i];
                ASSERT_EQ(snapshot.block, current);
                ASSERT_EQ(snapshot.from, (first_fill + rendered) % block);
                ASSERT_LT(snapshot.from, snapshot.to);
                if (snapshot.from == 0) ++begun;
                rendered += snapshot.frames();
                // A snapshot ends at the end of a call or block, and neither ends within a snapshot.
                const bool ends_block = (first_fill + rendered) % block == 0;
                ASSERT_TRUE(ends_block || rendered % frames == 0);
                ASSERT_EQ((rendered - 1) / frames, (rendered - snapshot.frames()) / frames);
                ASSERT_EQ(ends_block, snapshot.to == block);
                if (ends_block) {
                    ++finished;
                    ++current;
                }
            }
            ASSERT_LE(begun, sonivex::kMaxFreshBlocks);
            ASSERT_LE(step.frames(), sonivex::kMaxBlocksOfFrames * block);
            ASSERT_EQ(step.freshBlocks(), begun);
            ASSERT_EQ(step.finishedBlocks(), finished);
            ASSERT_LE(step.blocks(), sonivex::kMaxBlocks);
            ASSERT_EQ(step.frames(), rendered - before_step);
            ASSERT_EQ(step.lastFill(), (first_fill + rendered) % block);
            ASSERT_GE(step.lanes(), step.count);
        }
        ASSERT_EQ(rendered, frames * calls);
    }
}

// A step leaves nothing to the next one that would still fit.
TEST(ConvolutionSteps, AreAsLongAsPossible) {
    test::Random random(2);
    for (int round = 0; round < 1000; ++round) {
        const auto frames = static_cast<std::size_t>(random.between(1, 600));
        Steps steps(256, static_cast<std::size_t>(random.between(0, 255)), frames, 5);
        while (steps.areLeft()) {
            const Step step = steps.next();
            if (!steps.areLeft() || step.count == sonivex::kMaxSnapshots) continue;
            Steps following = steps;
            ASSERT_GT(step.frames() + following.next().snapshots[0].frames(),
                      sonivex::kMaxBlocksOfFrames * 256);
        }
    }
}

}  // namespace
