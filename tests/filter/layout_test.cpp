// Checks in which channel each loudspeaker's signal comes out, for every layout of 6 and 8 channels.
#include <gtest/gtest.h>

#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "filter/faults/filter_under_test.h"
#include "vorlin/av_compat.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

std::string describe(const AVChannelLayout& layout) {
    char text[128];
    av_channel_layout_describe(&layout, text, sizeof(text));
    return text;
}

std::vector<std::string> nativeLayouts(int channels) {
    std::vector<std::string> names;
    void* position = nullptr;
    while (const AVChannelLayout* layout = av_channel_layout_standard(&position)) {
        if (layout->nb_channels == channels) names.push_back(describe(*layout));
    }
    return names;
}

// Makes a frame in which one loudspeaker plays noise and the others are silent.
std::unique_ptr<Vorlin::AVQFFrame> solo(const FrameSpec& spec, int speaker) {
    return makeFrame(spec, [speaker, random = noiseSource(6, 2000)](int frame, int channel) {
        return channel == speaker ? random(frame, channel) : int16_t{0};
    });
}

std::vector<double> energyPerChannel(const AVFrame* frame) {
    const auto channels = static_cast<std::size_t>(frame->ch_layout.nb_channels);
    std::vector<double> energy(channels, 0.0);
    const auto samples = samplesOf(frame);
    for (std::size_t i = 0; i < samples.size(); ++i) energy[i % channels] += std::pow(samples[i], 2.0);
    return energy;
}

// Returns the channels with a signal when only `speaker` plays.
std::vector<int> soundingChannels(const FrameSpec& spec, int speaker) {
    FilterUnderTest filter;
    filter.startNormalizer();
    const auto out = filter.pass(solo(spec, speaker));
    std::vector<int> sounding;
    if (!out) {
        ADD_FAILURE() << spec.layout << ": the filter lost the frame";
        return sounding;
    }
    EXPECT_EQ(out->getInfo().channel_layout, Vorlin::av::defaultLayoutMask(spec.channels));
    EXPECT_EQ(Vorlin::av::layoutMask(avFrameOf(out)->ch_layout),
              Vorlin::av::defaultLayoutMask(spec.channels));
    const auto energy = energyPerChannel(avFrameOf(out));
    for (std::size_t c = 0; c < energy.size(); ++c) {
        if (energy[c] > 0) sounding.push_back(static_cast<int>(c));
    }
    return sounding;
}

TEST(FilterLayouts, KeepEveryLoudspeakerOfADefaultLayoutInItsPlace) {
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP}) {
        for (const int channels : {1, 2, 6, 8}) {
            for (int speaker = 0; speaker < channels; ++speaker) {
                EXPECT_EQ(soundingChannels({.format = format, .channels = channels}, speaker),
                          std::vector{speaker})
                    << channels << " channels";
            }
        }
    }
}

// Maps each loudspeaker of a layout to channels of the default layout with the same count. A loudspeaker that
// the default layout lacks is downmixed to its neighbours.
struct Mapping {
    const char* layout;
    std::vector<std::vector<int>> heard_at;
};

// The default layouts are FL FR FC LFE BL BR and FL FR FC LFE BL BR SL SR.
const Mapping kMappings[] = {
    {"5.1", {{0}, {1}, {2}, {3}, {4}, {5}}},
    {"5.1(side)", {{0}, {1}, {2}, {3}, {4}, {5}}},     // FL FR FC LFE SL SR
    {"6.0", {{0}, {1}, {2}, {4, 5}, {4}, {5}}},        // FL FR FC BC SL SR
    {"6.0(front)", {{0}, {1}, {0}, {1}, {4}, {5}}},    // FL FR FLC FRC SL SR
    {"hexagonal", {{0}, {1}, {2}, {4}, {5}, {4, 5}}},  // FL FR FC BL BR BC
    {"7.1", {{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}}},
    {"7.1(wide)", {{0}, {1}, {2}, {3}, {4}, {5}, {0}, {1}}},       // FL FR FC LFE BL BR FLC FRC
    {"7.1(wide-side)", {{0}, {1}, {2}, {3}, {0}, {1}, {6}, {7}}},  // FL FR FC LFE FLC FRC SL SR
    {"octagonal", {{0}, {1}, {2}, {4}, {5}, {4, 5}, {6}, {7}}},    // FL FR FC BL BR BC SL SR
};

TEST(FilterLayouts, DownmixLoudspeakersThatTheDefaultLayoutLacksToTheirNeighbours) {
    for (const Mapping& mapping : kMappings) {
        const int channels = static_cast<int>(mapping.heard_at.size());
        for (int speaker = 0; speaker < channels; ++speaker) {
            const FrameSpec spec{
                .format = AV_SAMPLE_FMT_FLTP, .channels = channels, .layout = mapping.layout};
            EXPECT_EQ(soundingChannels(spec, speaker), mapping.heard_at[static_cast<std::size_t>(speaker)])
                << mapping.layout << ", loudspeaker " << speaker;
        }
    }
}

TEST(FilterLayouts, KeepEveryLoudspeakerOfANativeLayoutAudible) {
    for (const int channels : {6, 8}) {
        const auto names = nativeLayouts(channels);
        EXPECT_GE(names.size(), 3u);
        for (const std::string& name : names) {
            for (int speaker = 0; speaker < channels; ++speaker) {
                const FrameSpec spec{.format = AV_SAMPLE_FMT_FLTP, .channels = channels, .layout = name};
                // The cube exists since FFmpeg 7. libswresample leaves out what is above and behind.
                const bool is_left_out = name == "cube" && speaker >= 6;
                EXPECT_EQ(soundingChannels(spec, speaker).empty(), is_left_out)
                    << name << ", loudspeaker " << speaker;
            }
        }
    }
}

void reorder(const std::unique_ptr<Vorlin::AVQFFrame>& frame, AVChannelOrder order) {
    AVFrame* av = *frame;
    AVChannelLayout layout{};
    layout.order = order;
    layout.nb_channels = av->ch_layout.nb_channels;
    if (order == AV_CHANNEL_ORDER_CUSTOM) {
        layout.u.map = static_cast<AVChannelCustom*>(
            av_calloc(static_cast<std::size_t>(layout.nb_channels), sizeof(AVChannelCustom)));
        for (int c = 0; c < layout.nb_channels; ++c) {
            layout.u.map[c].id = static_cast<AVChannel>(AV_CHAN_TOP_CENTER + c);
        }
    }
    ASSERT_EQ(Vorlin::av::setFrameLayout(av, layout), 0);
    av_channel_layout_uninit(&layout);
    frame->getInfo() = Vorlin::AVQFFrame::describe(av);
    EXPECT_EQ(frame->getInfo().channel_layout, 0u);
}

TEST(FilterLayouts, MapCustomAndUnspecifiedOrdersByPosition) {
    for (const AVChannelOrder order : {AV_CHANNEL_ORDER_UNSPEC, AV_CHANNEL_ORDER_CUSTOM}) {
        for (const int channels : {1, 2, 6, 8}) {
            for (int speaker = 0; speaker < channels; ++speaker) {
                SCOPED_TRACE("order " + std::to_string(order) + ", channels " + std::to_string(channels));
                FilterUnderTest filter;
                filter.startNormalizer();
                auto frame = solo({.format = AV_SAMPLE_FMT_FLTP, .channels = channels}, speaker);
                reorder(frame, order);
                const auto out = filter.pass(std::move(frame));
                ASSERT_NE(out, nullptr);
                const auto energy = energyPerChannel(avFrameOf(out));
                for (int c = 0; c < channels; ++c) {
                    EXPECT_EQ(energy[static_cast<std::size_t>(c)] > 0, c == speaker) << c;
                }
            }
        }
    }
}

TEST(FilterLayouts, KeepTheCustomOrderOfABypassedFrame) {
    FilterUnderTest filter;
    auto frame = solo({.channels = 2}, 0);
    reorder(frame, AV_CHANNEL_ORDER_CUSTOM);
    const auto out = filter.pass(std::move(frame));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(avFrameOf(out)->ch_layout.order, AV_CHANNEL_ORDER_CUSTOM);
}

}  // namespace
}  // namespace test
