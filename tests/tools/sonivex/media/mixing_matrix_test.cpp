#include "mixing_matrix.h"

#include <gtest/gtest.h>

#include <cmath>

#include "audio_spec.h"

namespace {

using sonivex_tool::layoutName;
using sonivex_tool::mixingMatrix;
using sonivex_tool::onlyMovesChannels;

constexpr double kMinus3Db = 0.7071067811865476;

AVChannelLayout named(const char* name) {
    AVChannelLayout layout{};
    EXPECT_EQ(av_channel_layout_from_string(&layout, name), 0) << name;
    return layout;
}

// Every layout that libavutil names, with its channels in native order.
std::vector<AVChannelLayout> allLayouts() {
    std::vector<AVChannelLayout> layouts;
    void* position = nullptr;
    while (const AVChannelLayout* layout = av_channel_layout_standard(&position)) {
        if (layout->order == AV_CHANNEL_ORDER_NATIVE) layouts.push_back(*layout);
    }
    return layouts;
}

bool isLowFrequency(const AVChannelLayout& layout, int channel) {
    const AVChannel name = av_channel_layout_channel_from_index(&layout, static_cast<unsigned>(channel));
    return name == AV_CHAN_LOW_FREQUENCY || name == AV_CHAN_LOW_FREQUENCY_2;
}

// Returns the power in all channels of `to` when one channel of `from` sounds with power 1.
double arrivingPower(const AVChannelLayout& from, const AVChannelLayout& to, int channel) {
    const std::vector<double> matrix = mixingMatrix(from, to);
    double power = 0.0;
    for (int row = 0; row < to.nb_channels; ++row) {
        const double gain = matrix[static_cast<size_t>(row * from.nb_channels + channel)];
        power += gain * gain;
    }
    return power;
}

// Returns the gains of the loudspeaker `source` of `from` in the channels of `to`.
std::vector<double> gainsOf(const char* source, const char* from_name, const char* to_name) {
    const AVChannelLayout from = named(from_name);
    const AVChannelLayout to = named(to_name);
    const int column = av_channel_layout_index_from_string(&from, source);
    EXPECT_GE(column, 0) << source;
    const std::vector<double> matrix = mixingMatrix(from, to);
    std::vector<double> gains;
    for (int row = 0; row < to.nb_channels; ++row)
        gains.push_back(matrix.at(static_cast<size_t>(row * from.nb_channels + column)));
    return gains;
}

using Gains = std::vector<double>;

TEST(MixingMatrix, KeepsTheLevelOfEveryLoudspeakerInFivePointOneAndSevenPointOne) {
    ASSERT_GE(allLayouts().size(), 25U);
    for (const AVChannelLayout& from : allLayouts()) {
        for (const char* name : {"5.1", "7.1"}) {
            for (int channel = 0; channel < from.nb_channels; ++channel) {
                SCOPED_TRACE(layoutName(from) + " channel " + std::to_string(channel) + " to " + name);
                EXPECT_NEAR(10.0 * std::log10(arrivingPower(from, named(name), channel)), 0.0, 0.1);
            }
        }
    }
}

TEST(MixingMatrix, LeavesNoLoudspeakerOutOfAnyLayoutExceptLowFrequency) {
    for (const AVChannelLayout& from : allLayouts()) {
        for (const AVChannelLayout& to : allLayouts()) {
            for (int channel = 0; channel < from.nb_channels; ++channel) {
                if (isLowFrequency(from, channel)) continue;
                SCOPED_TRACE(layoutName(from) + " channel " + std::to_string(channel) + " to " +
                             layoutName(to));
                const double power = arrivingPower(from, to, channel);
                EXPECT_GE(power, 0.25 - 1e-9);  // a surround in mono, -6 dB
                EXPECT_LE(power, 1.0 + 1e-9);
            }
        }
    }
}

TEST(MixingMatrix, PutsEveryLoudspeakerAtItsOwnPlaceIfThereIsOne) {
    const AVChannelLayout from = named("2.1");
    const AVChannelLayout to = named("7.1");
    EXPECT_EQ(gainsOf("FL", "2.1", "7.1"), (Gains{1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(gainsOf("FR", "2.1", "7.1"), (Gains{0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(gainsOf("LFE", "2.1", "7.1"), (Gains{0, 0, 0, 1, 0, 0, 0, 0}));
    EXPECT_TRUE(onlyMovesChannels(mixingMatrix(from, to), from.nb_channels));
}

TEST(MixingMatrix, SharesALoudspeakerBetweenItsNeighbours) {
    EXPECT_EQ(gainsOf("BC", "6.1", "7.1"), (Gains{0, 0, 0, 0, kMinus3Db, kMinus3Db, 0, 0}));
    EXPECT_EQ(gainsOf("BC", "4.0", "5.1(side)"), (Gains{0, 0, 0, 0, kMinus3Db, kMinus3Db}));
    EXPECT_EQ(gainsOf("FLC", "7.1(wide)", "7.1"), (Gains{kMinus3Db, 0, kMinus3Db, 0, 0, 0, 0, 0}));
    EXPECT_EQ(gainsOf("FRC", "7.1(wide)", "7.1"), (Gains{0, kMinus3Db, kMinus3Db, 0, 0, 0, 0, 0}));
    EXPECT_EQ(gainsOf("SR", "7.1", "5.1"), (Gains{0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(gainsOf("TC", "22.2", "7.1"), (Gains{0.5, 0.5, 0, 0, 0.5, 0.5, 0, 0}));
    EXPECT_EQ(gainsOf("WR", "hexadecagonal", "7.1"), (Gains{0, kMinus3Db, 0, 0, 0, 0, 0, kMinus3Db}));
}

TEST(MixingMatrix, FoldsDownToStereoAndMonoAsTheBroadcastRecommendationDoes) {
    EXPECT_EQ(gainsOf("FL", "5.1", "stereo"), (Gains{1, 0}));
    EXPECT_EQ(gainsOf("FC", "5.1", "stereo"), (Gains{kMinus3Db, kMinus3Db}));
    EXPECT_EQ(gainsOf("LFE", "5.1", "stereo"), (Gains{0, 0}));
    EXPECT_EQ(gainsOf("BL", "5.1", "stereo"), (Gains{kMinus3Db, 0}));
    EXPECT_EQ(gainsOf("SR", "5.1(side)", "stereo"), (Gains{0, kMinus3Db}));
    EXPECT_EQ(gainsOf("BC", "4.0", "stereo"), (Gains{0.5, 0.5}));
    EXPECT_EQ(gainsOf("FR", "5.1", "mono"), (Gains{kMinus3Db}));
    EXPECT_EQ(gainsOf("FC", "5.1", "mono"), (Gains{1}));
    EXPECT_EQ(gainsOf("BR", "5.1", "mono"), (Gains{0.5}));
    EXPECT_EQ(gainsOf("FC", "mono", "stereo"), (Gains{kMinus3Db, kMinus3Db}));
}

TEST(MixingMatrix, TreatsTheChannelsOfADownmixAsLeftAndRight) {
    EXPECT_EQ(gainsOf("DL", "downmix", "stereo"), (Gains{1, 0}));
    EXPECT_EQ(gainsOf("DR", "downmix", "stereo"), (Gains{0, 1}));
    EXPECT_EQ(gainsOf("FR", "stereo", "downmix"), (Gains{0, 1}));
}

TEST(MixingMatrix, TellsMovesFromMixes) {
    const auto moves = [](const char* from, const char* to) {
        return onlyMovesChannels(mixingMatrix(named(from), named(to)), named(from).nb_channels);
    };
    EXPECT_TRUE(moves("5.1(side)", "5.1"));
    EXPECT_TRUE(moves("5.0", "7.1"));
    EXPECT_FALSE(moves("6.1", "7.1"));     // shares the back centre
    EXPECT_FALSE(moves("7.1", "5.1"));     // sums sides and backs
    EXPECT_FALSE(moves("5.1", "stereo"));  // leaves the LFE out
    EXPECT_FALSE(moves("2.1", "stereo"));  // leaves the LFE out and mixes nothing
    EXPECT_FALSE(moves("7.0(front)", "7.1"));
}

}  // namespace
