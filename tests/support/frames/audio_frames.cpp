#include "support/frames/audio_frames.h"

#include <gtest/gtest.h>

#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "support/signals/signals.h"
#include "vorlin/av_compat.h"

namespace test {

namespace {

constexpr double kFullScale = 32768.0;

uint8_t* addressOf(const AVFrame* frame, int index, int channel) {
    const auto format = static_cast<AVSampleFormat>(frame->format);
    const int bytes = av_get_bytes_per_sample(format);
    if (av_sample_fmt_is_planar(format) != 0) {
        return frame->extended_data[channel] + static_cast<ptrdiff_t>(index) * bytes;
    }
    return frame->extended_data[0] +
           (static_cast<ptrdiff_t>(index) * frame->ch_layout.nb_channels + channel) * bytes;
}

void store(AVSampleFormat packed, uint8_t* at, int16_t value) {
    switch (packed) {
        case AV_SAMPLE_FMT_U8:
            *at = static_cast<uint8_t>((value >> 8) + 128);
            break;
        case AV_SAMPLE_FMT_S16:
            *reinterpret_cast<int16_t*>(at) = value;
            break;
        case AV_SAMPLE_FMT_S32:
            *reinterpret_cast<int32_t*>(at) = value * (1 << 16);
            break;
        case AV_SAMPLE_FMT_S64:
            *reinterpret_cast<int64_t*>(at) = value * (int64_t{1} << 48);
            break;
        case AV_SAMPLE_FMT_FLT:
            *reinterpret_cast<float*>(at) = static_cast<float>(value / kFullScale);
            break;
        case AV_SAMPLE_FMT_DBL:
            *reinterpret_cast<double*>(at) = value / kFullScale;
            break;
        default:
            ADD_FAILURE() << "unknown sample format " << packed;
    }
}

// Returns the sample in 16-bit units: a whole number if the sample is a 16-bit value.
double load(AVSampleFormat packed, const uint8_t* at) {
    switch (packed) {
        case AV_SAMPLE_FMT_U8:
            return (*at - 128) * 256.0;
        case AV_SAMPLE_FMT_S16:
            return *reinterpret_cast<const int16_t*>(at);
        case AV_SAMPLE_FMT_S32:
            return *reinterpret_cast<const int32_t*>(at) / 65536.0;
        case AV_SAMPLE_FMT_S64:
            return static_cast<double>(*reinterpret_cast<const int64_t*>(at)) / 281474976710656.0;
        case AV_SAMPLE_FMT_FLT:
            return static_cast<double>(*reinterpret_cast<const float*>(at)) * kFullScale;
        case AV_SAMPLE_FMT_DBL:
            return *reinterpret_cast<const double*>(at) * kFullScale;
        default:
            ADD_FAILURE() << "unknown sample format " << packed;
            return 0;
    }
}

}  // namespace

std::unique_ptr<Vorlin::AVQFFrame> makeFrame(const FrameSpec& spec, const SampleSource& source) {
    AVFrame* frame = av_frame_alloc();
    frame->format = spec.format;
    frame->sample_rate = spec.rate_hz;
    frame->nb_samples = spec.frames;
    if (spec.layout.empty()) {
        EXPECT_EQ(Vorlin::av::setFrameDefaultLayout(frame, spec.channels), 0);
    } else {
        AVChannelLayout layout{};
        EXPECT_EQ(av_channel_layout_from_string(&layout, spec.layout.c_str()), 0) << spec.layout;
        EXPECT_EQ(layout.nb_channels, spec.channels) << spec.layout;
        EXPECT_EQ(Vorlin::av::setFrameLayout(frame, layout), 0);
        av_channel_layout_uninit(&layout);
    }
    EXPECT_EQ(av_frame_get_buffer(frame, 0), 0);
    const AVSampleFormat packed = av_get_packed_sample_fmt(spec.format);
    for (int i = 0; i < spec.frames; ++i) {
        for (int c = 0; c < spec.channels; ++c) store(packed, addressOf(frame, i, c), source(i, c));
    }
    return std::make_unique<Vorlin::AVQFFrame>(frame);
}

std::vector<int16_t> samplesOf(const AVFrame* frame) {
    std::vector<int16_t> samples;
    const AVSampleFormat packed = av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame->format));
    for (int i = 0; i < frame->nb_samples; ++i) {
        for (int c = 0; c < frame->ch_layout.nb_channels; ++c) {
            const double value = load(packed, addressOf(frame, i, c));
            if (value != std::nearbyint(value) || std::abs(value) > kFullScale) {
                ADD_FAILURE() << "frame " << i << ", channel " << c << ": " << value
                              << " is not a 16-bit value";
                return samples;
            }
            samples.push_back(static_cast<int16_t>(value));
        }
    }
    return samples;
}

AVFrame* avFrameOf(const std::unique_ptr<Vorlin::IQFFrame>& frame) {
    auto* holder = dynamic_cast<Vorlin::AVQFFrame*>(frame.get());
    return holder != nullptr ? static_cast<AVFrame*>(*holder) : nullptr;
}

std::vector<AVSampleFormat> allSampleFormats() {
    std::vector<AVSampleFormat> formats;
    for (int format = 0; format < AV_SAMPLE_FMT_NB; ++format)
        formats.push_back(static_cast<AVSampleFormat>(format));
    return formats;
}

SampleSource noiseSource(std::uint32_t seed, int amplitude) {
    return [seed, amplitude](int frame, int channel) {
        constexpr std::uint64_t kMaxChannels = 64;
        const std::uint64_t place =
            static_cast<std::uint64_t>(frame) * kMaxChannels + static_cast<std::uint64_t>(channel);
        Random random((std::uint64_t{seed} << 32U) + place);
        return static_cast<std::int16_t>(random.between(-amplitude - 1, amplitude));
    };
}

}  // namespace test
