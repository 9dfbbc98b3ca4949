#include "channel_split_merge.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

TEST(ChannelSplitMerge, SplitGivesEachChannelItsSamplesInOrder) {
    const std::vector<float> interleaved{1, 10, 100, 2, 20, 200};
    std::vector<std::vector<float>> channels(3, std::vector<float>(2));
    float* const buffers[] = {channels[0].data(), channels[1].data(), channels[2].data()};
    ChannelSplit_f(interleaved.data(), 6, buffers, 3);
    EXPECT_EQ(channels[0], (std::vector<float>{1, 2}));
    EXPECT_EQ(channels[1], (std::vector<float>{10, 20}));
    EXPECT_EQ(channels[2], (std::vector<float>{100, 200}));
}

TEST(ChannelSplitMerge, SplitCountsSamplesAndIgnoresAnIncompleteFrame) {
    const std::vector<float> interleaved{1, 10, 2, 20, 3};
    std::vector<std::vector<float>> channels(2, std::vector<float>(3, -1.0F));
    float* const buffers[] = {channels[0].data(), channels[1].data()};
    ChannelSplit_f(interleaved.data(), 5, buffers, 2);
    EXPECT_EQ(channels[0], (std::vector<float>{1, 2, -1}));
    EXPECT_EQ(channels[1], (std::vector<float>{10, 20, -1}));
}

TEST(ChannelSplitMerge, MergeCountsFramesAndUndoesSplit) {
    for (int channels = 1; channels <= 8; ++channels) {
        for (const int frames : {1, 2, 3, 64, 513}) {
            const auto samples = static_cast<std::size_t>(channels * frames);
            std::vector<float> interleaved(samples);
            std::iota(interleaved.begin(), interleaved.end(), 1.0F);
            std::vector<std::vector<float>> planes(static_cast<std::size_t>(channels),
                                                   std::vector<float>(static_cast<std::size_t>(frames)));
            std::vector<float*> buffers;
            for (auto& plane : planes) buffers.push_back(plane.data());
            ChannelSplit_f(interleaved.data(), channels * frames, buffers.data(), channels);
            std::vector<float> merged(samples + 1, -5.0F);
            ChannelMerge_f(merged.data(), frames, buffers.data(), channels);
            EXPECT_EQ(merged.back(), -5.0F);
            merged.pop_back();
            EXPECT_EQ(merged, interleaved) << channels << " channels, " << frames << " frames";
        }
    }
}

TEST(ChannelSplitMerge, DoNothingWithoutAFrameOrAChannel) {
    float sample = 3.0F;
    float plane = 4.0F;
    float* const buffers[] = {&plane};
    ChannelSplit_f(&sample, 0, buffers, 1);
    ChannelSplit_f(&sample, 1, buffers, 2);
    ChannelSplit_f(&sample, 1, buffers, 0);
    ChannelSplit_f(&sample, -4, buffers, 1);
    ChannelSplit_f(&sample, -4, buffers, -1);
    EXPECT_EQ(plane, 4.0F);
    ChannelMerge_f(&sample, 0, buffers, 1);
    ChannelMerge_f(&sample, -1, buffers, 1);
    ChannelMerge_f(&sample, 1, buffers, 0);
    ChannelMerge_f(&sample, 1, buffers, -1);
    EXPECT_EQ(sample, 3.0F);
}

}  // namespace
