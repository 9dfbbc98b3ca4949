#include "codec_choice.h"

#include <algorithm>
#include <array>
#include <utility>

#include "codec_lists.h"
#include "container_choice.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

constexpr int kStereo = 2;
constexpr int kMostAc3Channels = 6;

// Codecs that an error message may propose, the most common first.
constexpr std::array<const char*, 14> kCommonCodecs = {
    "opus",      "aac",       "mp3",       "flac",      "alac",      "ac3",     "eac3",
    "pcm_s16le", "pcm_s24le", "pcm_f32le", "pcm_s16be", "pcm_s24be", "wavpack", "vorbis"};

struct PcmPair {
    const char* format;
    AVCodecID little_endian;
    AVCodecID big_endian;
};
constexpr std::array<PcmPair, 7> kPcmPairs = {{{"u8", AV_CODEC_ID_PCM_U8, AV_CODEC_ID_PCM_U8},
                                               {"s16", AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S16BE},
                                               {"s24", AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S24BE},
                                               {"s32", AV_CODEC_ID_PCM_S32LE, AV_CODEC_ID_PCM_S32BE},
                                               {"s64", AV_CODEC_ID_PCM_S64LE, AV_CODEC_ID_PCM_S64BE},
                                               {"flt", AV_CODEC_ID_PCM_F32LE, AV_CODEC_ID_PCM_F32BE},
                                               {"dbl", AV_CODEC_ID_PCM_F64LE, AV_CODEC_ID_PCM_F64BE}}};

bool takesRate(AVCodecID codec, int rate_hz) {
    const AVCodec* encoder = avcodec_find_encoder(codec);
    if (encoder == nullptr) return false;
    const auto rates = sampleRatesHz(*encoder);
    return rates.empty() || std::find(rates.begin(), rates.end(), rate_hz) != rates.end();
}

std::string codecsFor(const AVOutputFormat& muxer) {
    std::string list;
    for (const char* name : kCommonCodecs) {
        const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(name);
        if (!holds(muxer, descriptor->id) || avcodec_find_encoder(descriptor->id) == nullptr) continue;
        list += (list.empty() ? "" : ", ") + std::string(name);
    }
    return list.empty() ? std::string(avcodec_get_name(muxer.audio_codec)) : list;
}

Failure refusal(const OutputSettings& settings, const std::string& reason) {
    return {ExitCode::OutputFormat, "cannot write \"" + settings.path + "\": " + reason};
}

// A codec's PCM for samples that have `bits` significant bits.
AVCodecID pcmFor(const AVOutputFormat& muxer, const AudioFacts& audio) {
    SampleFormat format{av_get_packed_sample_fmt(audio.spec.format), audio.bits_per_sample};
    if (format.format == AV_SAMPLE_FMT_S32 && audio.bits_per_sample > 0 && audio.bits_per_sample <= 24)
        format.significant_bits = 24;
    return pcmCodec(muxer, format);
}

AVCodecID codecForFilm(const AVOutputFormat& muxer, const AudioFacts& audio) {
    const int channels = audio.spec.channels();
    if (isOneOf(muxer, "matroska")) {
        if (audio.is_lossless) return AV_CODEC_ID_FLAC;
        return takesRate(AV_CODEC_ID_OPUS, audio.spec.rate_hz) ? AV_CODEC_ID_OPUS : AV_CODEC_ID_AAC;
    }
    if (isOneOf(muxer, "webm")) return AV_CODEC_ID_OPUS;
    if (isOneOf(muxer, "mov") && audio.is_lossless) return pcmFor(muxer, audio);
    if (isOneOf(muxer, "mov mp4 ipod psp f4v 3gp 3g2 mpegts flv")) return AV_CODEC_ID_AAC;
    if (isOneOf(muxer, "avi")) {
        if (channels <= kStereo) return AV_CODEC_ID_MP3;
        return channels <= kMostAc3Channels ? AV_CODEC_ID_AC3 : pcmFor(muxer, audio);
    }
    if (isOneOf(muxer, "mpeg vob svcd dvd") && channels > kStereo) return AV_CODEC_ID_AC3;
    return AV_CODEC_ID_NONE;
}

const AVCodec* encoderNamed(const std::string& name, const OutputSettings& settings,
                            const AVOutputFormat& muxer, const AudioFacts& audio) {
    AVCodecID id = AV_CODEC_ID_NONE;
    if (name == "pcm") {
        const SampleFormat wanted = sampleFormatNamed(settings.sample_format.value_or(""));
        id = wanted.format != AV_SAMPLE_FMT_NONE ? pcmCodec(muxer, wanted) : pcmFor(muxer, audio);
    } else if (const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(name.c_str())) {
        // The name of a codec comes first: it has a better encoder than the one so named.
        id = descriptor->id;
    }
    const AVCodec* encoder =
        id != AV_CODEC_ID_NONE ? avcodec_find_encoder(id) : avcodec_find_encoder_by_name(name.c_str());
    if (encoder != nullptr && encoder->type == AVMEDIA_TYPE_AUDIO) return encoder;
    throw refusal(settings, "there is no audio encoder \"" + name + "\"; --codec may be " + codecsFor(muxer));
}

}  // namespace

bool isLossless(AVCodecID codec, int profile) {
    if (codec == AV_CODEC_ID_DTS) return profile == FF_PROFILE_DTS_HD_MA;
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
           (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

SampleFormat storedFormat(AVCodecID codec, AVSampleFormat encoder_format) {
    const bool has_24_bits = codec == AV_CODEC_ID_FLAC || codec == AV_CODEC_ID_ALAC ||
                             codec == AV_CODEC_ID_TTA || codec == AV_CODEC_ID_TRUEHD ||
                             codec == AV_CODEC_ID_MLP || av_get_exact_bits_per_sample(codec) == 24;
    const bool is_s32 = av_get_packed_sample_fmt(encoder_format) == AV_SAMPLE_FMT_S32;
    return {encoder_format, is_s32 && has_24_bits ? 24 : 0};
}

AVCodecID pcmCodec(const AVOutputFormat& muxer, const SampleFormat& format) {
    const std::string name = nameOf(format);
    for (const PcmPair& pair : kPcmPairs) {
        if (name != pair.format) continue;
        if (holds(muxer, pair.little_endian)) return pair.little_endian;
        if (holds(muxer, pair.big_endian)) return pair.big_endian;
    }
    return AV_CODEC_ID_NONE;
}

const AVCodec* chooseEncoder(const OutputSettings& settings, const AVOutputFormat& muxer,
                             const AudioFacts& audio) {
    if (settings.codec) {
        const AVCodec* encoder = encoderNamed(*settings.codec, settings, muxer, audio);
        if (holds(muxer, encoder->id)) return encoder;
        throw refusal(settings, std::string(muxer.name) + " files cannot hold " +
                                    avcodec_get_name(encoder->id) + "; --codec may be " + codecsFor(muxer));
    }
    AVCodecID id = codecForFilm(muxer, audio);
    const bool holds_pcm = av_get_exact_bits_per_sample(muxer.audio_codec) > 0;
    if (id == AV_CODEC_ID_NONE && holds_pcm) {
        const SampleFormat wanted = sampleFormatNamed(settings.sample_format.value_or(""));
        id = wanted.format != AV_SAMPLE_FMT_NONE ? pcmCodec(muxer, wanted) : pcmFor(muxer, audio);
    }
    if (id == AV_CODEC_ID_NONE || !holds(muxer, id)) id = muxer.audio_codec;
    const AVCodec* encoder = avcodec_find_encoder(id);
    if (encoder == nullptr)
        throw refusal(settings, std::string("there is no encoder for ") + avcodec_get_name(id));
    return encoder;
}

}  // namespace sonivex_tool
