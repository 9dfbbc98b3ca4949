#include "encoder_plan.h"

#include <libavutil/samplefmt.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "codec_lists.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

// Ample for speech and music, and within the limits of every common lossy encoder.
constexpr int64_t kBitsPerSecondPerChannel = 96'000;
// Below this sample rate encoders have lower bit rate limits, so they get half the rate.
constexpr int kFullBandwidthHz = 32'000;

bool isFloat(AVSampleFormat packed) {
    return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
}

// Bits of a sample that a format preserves exactly.
int precisionBits(AVSampleFormat packed) {
    if (packed == AV_SAMPLE_FMT_FLT) return 24;
    if (packed == AV_SAMPLE_FMT_DBL) return 53;
    return 8 * av_get_bytes_per_sample(packed);
}

// Distance of `choice` from `wanted`; smaller is better. In order of weight it counts precision lost,
// precision wasted, a change between integer and float (more if it can clip), and a change between packed and
// planar.
int distance(AVSampleFormat wanted, AVSampleFormat choice) {
    const AVSampleFormat from = av_get_packed_sample_fmt(wanted);
    const AVSampleFormat to = av_get_packed_sample_fmt(choice);
    const int gained = precisionBits(to) - precisionBits(from);
    const bool clips = isFloat(from) && !isFloat(to);
    const int loss_cost = gained < 0 ? 10'000 - 100 * gained : 0;
    const int waste_cost = gained > 0 ? 10 * gained : 0;
    const int kind_cost = (clips ? 4 : 0) + (isFloat(from) != isFloat(to) ? 2 : 0);
    return loss_cost + waste_cost + kind_cost + (wanted == choice ? 0 : 1);
}

AVCodecID pcmCodec(AVSampleFormat format, int bits_per_sample) {
    switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_U8:
            return AV_CODEC_ID_PCM_U8;
        case AV_SAMPLE_FMT_S32:
            return bits_per_sample > 0 && bits_per_sample <= 24 ? AV_CODEC_ID_PCM_S24LE
                                                                : AV_CODEC_ID_PCM_S32LE;
        case AV_SAMPLE_FMT_S64:
            return AV_CODEC_ID_PCM_S64LE;
        case AV_SAMPLE_FMT_FLT:
            return AV_CODEC_ID_PCM_F32LE;
        case AV_SAMPLE_FMT_DBL:
            return AV_CODEC_ID_PCM_F64LE;
        default:
            return AV_CODEC_ID_PCM_S16LE;
    }
}

bool holdsAnyPcm(const AVOutputFormat& muxer) {
    const std::string name = muxer.name;
    return name == "wav" || name == "w64";
}

// Returns true if the format holds only samples. A player would have to guess their sample rate and channels.
bool isHeaderless(const AVOutputFormat& muxer) {
    const std::string name = muxer.name;
    if (name == "aptx" || name == "aptx_hd" || name == "dfpwm") return true;
    return avcodec_get_name(muxer.audio_codec) == "pcm_" + name;
}

const AVOutputFormat* chooseMuxer(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    const AVOutputFormat* muxer = extension.empty() ? av_guess_format("wav", nullptr, nullptr)
                                                    : av_guess_format(nullptr, path.c_str(), nullptr);
    if (muxer == nullptr) {
        throw Failure(ExitCode::OutputFormat,
                      "cannot write \"" + path + "\": unknown file format \"" + extension + "\"");
    }
    if ((muxer->flags & (AVFMT_NOFILE | AVFMT_NEEDNUMBER)) != 0 || muxer->audio_codec == AV_CODEC_ID_NONE) {
        throw Failure(ExitCode::OutputFormat,
                      "cannot write \"" + path + "\": \"" + extension + "\" is not an audio file format");
    }
    if (isHeaderless(*muxer)) {
        throw Failure(ExitCode::OutputFormat,
                      "cannot write \"" + path + "\": \"" + extension +
                          "\" files store neither the sample rate nor the channel count");
    }
    return muxer;
}

AVChannelLayout chooseLayout(const std::string& path, const AVCodec& codec, const AVChannelLayout& wanted) {
    const auto choices = channelLayouts(codec);
    if (choices.empty()) return wanted;
    const AVChannelLayout* same_count = nullptr;
    for (const AVChannelLayout& choice : choices) {
        if (av_channel_layout_compare(&choice, &wanted) == 0) return wanted;
        if (choice.nb_channels == wanted.nb_channels && same_count == nullptr) same_count = &choice;
    }
    if (same_count == nullptr) {
        throw Failure(ExitCode::OutputFormat, "cannot write \"" + path + "\": " + avcodec_get_name(codec.id) +
                                                  " does not support " + std::to_string(wanted.nb_channels) +
                                                  " channels (" + layoutName(wanted) + ")");
    }
    return *same_count;
}

int64_t lossyBitRate(const AVCodec& codec, const AudioSpec& spec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.id);
    const bool is_lossless = descriptor == nullptr || (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0;
    if (is_lossless) return 0;
    const int64_t full = kBitsPerSecondPerChannel * spec.channels();
    return spec.rate_hz < kFullBandwidthHz ? full / 2 : full;
}

}  // namespace

AVSampleFormat nearestSampleFormat(AVSampleFormat wanted, const std::vector<AVSampleFormat>& choices) {
    AVSampleFormat best = wanted;
    int best_distance = std::numeric_limits<int>::max();
    for (const AVSampleFormat choice : choices) {
        const int d = distance(wanted, choice);
        if (d < best_distance) {
            best_distance = d;
            best = choice;
        }
    }
    return best;
}

int nearestRateHz(int wanted, const std::vector<int>& choices) {
    if (choices.empty()) return wanted;
    int best = 0;
    for (const int choice : choices) {
        if (choice >= wanted && (best < wanted || choice < best)) best = choice;
        if (choice < wanted && best < wanted) best = std::max(best, choice);
    }
    return best;
}

EncoderPlan planEncoder(const OutputSettings& settings, const AudioSpec& audio, int bits_per_sample) {
    const std::string& path = settings.path;
    EncoderPlan plan;
    plan.muxer = chooseMuxer(path);
    const AVCodecID id =
        holdsAnyPcm(*plan.muxer) ? pcmCodec(audio.format, bits_per_sample) : plan.muxer->audio_codec;
    plan.codec = avcodec_find_encoder(id);
    if (plan.codec == nullptr) {
        throw Failure(ExitCode::OutputFormat,
                      "cannot write \"" + path + "\": there is no encoder for " + avcodec_get_name(id));
    }
    plan.spec.format = nearestSampleFormat(audio.format, sampleFormats(*plan.codec));
    plan.spec.rate_hz = nearestRateHz(audio.rate_hz, sampleRatesHz(*plan.codec));
    plan.spec.layout = chooseLayout(path, *plan.codec, audio.layout);
    if (plan.spec.rate_hz != audio.rate_hz) {
        plan.notes.push_back(std::string(avcodec_get_name(id)) + " does not support " +
                             std::to_string(audio.rate_hz) + " Hz; the output has " +
                             std::to_string(plan.spec.rate_hz) + " Hz");
    }
    if (av_get_packed_sample_fmt(plan.spec.format) == AV_SAMPLE_FMT_S32)
        plan.bits_per_sample = bits_per_sample;
    plan.bit_rate = lossyBitRate(*plan.codec, plan.spec);
    return plan;
}

}  // namespace sonivex_tool
