#include "encoder_plan.h"

#include <libavutil/samplefmt.h>

#include <algorithm>

#include "codec_lists.h"
#include "container_choice.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

// Ample for speech and music, and within the limits of every common lossy encoder.
constexpr int64_t kBitsPerSecondPerChannel = 96'000;
// Below this sample rate encoders have lower bit rate limits, so they get half the rate.
constexpr int kFullBandwidthHz = 32'000;
constexpr int64_t kLowestBitRate = 500;
constexpr int64_t kHighestBitRate = 100'000'000;

Failure refusal(const OutputSettings& settings, const std::string& reason) {
    return {ExitCode::OutputFormat, "cannot write \"" + settings.path + "\": " + reason};
}

bool isEncodedLosslessly(const AVCodec& codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.id);
    return descriptor == nullptr || (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0;
}

std::vector<SampleFormat> namedFormats(const AVCodec& codec) {
    std::vector<SampleFormat> formats;
    for (const AVSampleFormat format : sampleFormats(codec))
        formats.push_back(storedFormat(codec.id, format));
    return formats;
}

void chooseSampleFormat(EncoderPlan& plan, const OutputSettings& settings, const AudioFacts& audio) {
    if (!settings.sample_format) {
        plan.spec.format = nearestSampleFormat(audio.spec.format, sampleFormats(*plan.codec));
        if (av_get_packed_sample_fmt(plan.spec.format) == AV_SAMPLE_FMT_S32)
            plan.bits_per_sample = audio.bits_per_sample;
        return;
    }
    std::string names;
    for (const SampleFormat& format : namedFormats(*plan.codec)) {
        const std::string name = nameOf(format);
        if (name == *settings.sample_format) {
            plan.spec.format = format.format;
            plan.bits_per_sample = format.significant_bits;
            return;
        }
        if ((", " + names + ",").find(", " + name + ",") == std::string::npos)
            names += (names.empty() ? "" : ", ") + name;
    }
    throw refusal(settings, std::string(avcodec_get_name(plan.codec->id)) + " does not hold \"" +
                                *settings.sample_format + "\" samples; --sample-format may be " + names);
}

AVChannelLayout chooseLayout(const OutputSettings& settings, const AVCodec& codec,
                             const AVChannelLayout& wanted) {
    const auto choices = channelLayouts(codec);
    if (choices.empty()) return wanted;
    const AVChannelLayout* same_count = nullptr;
    for (const AVChannelLayout& choice : choices) {
        if (av_channel_layout_compare(&choice, &wanted) == 0) return wanted;
        if (choice.nb_channels == wanted.nb_channels && same_count == nullptr) same_count = &choice;
    }
    if (same_count == nullptr) {
        throw refusal(settings, std::string(avcodec_get_name(codec.id)) + " does not support " +
                                    std::to_string(wanted.nb_channels) +
                                    (wanted.nb_channels == 1 ? " channel (" : " channels (") +
                                    layoutName(wanted) + ")");
    }
    return *same_count;
}

void chooseBitRate(EncoderPlan& plan, const OutputSettings& settings) {
    const std::string codec = avcodec_get_name(plan.codec->id);
    if (isEncodedLosslessly(*plan.codec)) {
        if (settings.bit_rate) throw refusal(settings, codec + " is lossless and takes no --bitrate");
        return;
    }
    if (settings.bit_rate && (*settings.bit_rate < kLowestBitRate || *settings.bit_rate > kHighestBitRate)) {
        throw refusal(settings, "--bitrate must be from " + std::to_string(kLowestBitRate) + " to " +
                                    std::to_string(kHighestBitRate) + " bit/s, not " +
                                    std::to_string(*settings.bit_rate));
    }
    const int64_t full = kBitsPerSecondPerChannel * plan.spec.channels();
    const int64_t usual = plan.spec.rate_hz < kFullBandwidthHz ? full / 2 : full;
    plan.bit_rate = settings.bit_rate.value_or(usual);
    plan.has_chosen_bit_rate = settings.bit_rate.has_value();
}

}  // namespace

int nearestRateHz(int wanted, const std::vector<int>& choices) {
    if (choices.empty()) return wanted;
    int best = 0;
    for (const int choice : choices) {
        if (choice >= wanted && (best < wanted || choice < best)) best = choice;
        if (choice < wanted && best < wanted) best = std::max(best, choice);
    }
    return best;
}

EncoderPlan planEncoder(const OutputSettings& settings, const AudioFacts& audio) {
    EncoderPlan plan;
    plan.muxer = chooseContainer(settings);
    plan.codec = chooseEncoder(settings, *plan.muxer, audio);
    const std::string codec = avcodec_get_name(plan.codec->id);
    chooseSampleFormat(plan, settings, audio);
    plan.spec.rate_hz = nearestRateHz(audio.spec.rate_hz, sampleRatesHz(*plan.codec));
    plan.spec.layout = chooseLayout(settings, *plan.codec, audio.spec.layout);
    if (plan.spec.rate_hz != audio.spec.rate_hz) {
        plan.notes.push_back(codec + " does not support " + std::to_string(audio.spec.rate_hz) +
                             " Hz; the output has " + std::to_string(plan.spec.rate_hz) + " Hz");
    }
    if (av_channel_layout_compare(&plan.spec.layout, &audio.spec.layout) != 0) {
        plan.notes.push_back(codec + " does not support the layout " + layoutName(audio.spec.layout) +
                             "; the output has " + layoutName(plan.spec.layout));
    }
    chooseBitRate(plan, settings);
    return plan;
}

}  // namespace sonivex_tool
