#include "audio_encoder.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>

#include "failure.h"

namespace sonivex_tool {
namespace {

// Frames per call of an encoder that accepts any length.
constexpr int kFramesWhereAnyLengthDoes = 4096;

}  // namespace

AudioEncoder::AudioEncoder(const EncoderPlan& plan, bool global_header, PacketReceiver receive)
    : plan_(plan),
      receive_(std::move(receive)),
      encoder_(allocated(avcodec_alloc_context3(plan.codec))),
      packet_(allocated(av_packet_alloc())),
      pending_(plan.spec) {
    encoder_->sample_fmt = plan_.spec.format;
    encoder_->sample_rate = plan_.spec.rate_hz;
    encoder_->time_base = {1, plan_.spec.rate_hz};
    encoder_->bits_per_raw_sample = plan_.bits_per_sample;
    if (plan_.bit_rate > 0) encoder_->bit_rate = plan_.bit_rate;
    check(av_channel_layout_copy(&encoder_->ch_layout, &plan_.spec.layout));
    if (global_header) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // Only --codec can choose an encoder that FFmpeg calls experimental.
    if ((plan_.codec->capabilities & AV_CODEC_CAP_EXPERIMENTAL) != 0)
        encoder_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    // Opus alone has this option. Without it tones may take far more than the bit rate; FFmpeg's own encoder
    // lacks the option.
    if (plan_.holds_bit_rate) (void)av_opt_set(encoder_->priv_data, "vbr", "constrained", 0);
    const int result = avcodec_open2(encoder_.get(), plan_.codec, nullptr);
    if (result >= 0) return;
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    const std::string audio =
        layoutName(plan_.spec.layout) + " at " + std::to_string(plan_.spec.rate_hz) + " Hz";
    const std::string bits = std::to_string(plan_.bit_rate) + " bit/s";
    const std::string codec = avcodec_get_name(plan_.codec->id);
    std::string reason = codec + " does not support " + audio;
    if (plan_.bit_rate > 0) reason += " and " + bits;
    if (plan_.has_chosen_bit_rate)
        reason = "the encoder of " + codec + " refuses --bitrate " + bits + " for " + audio;
    throw Failure(ExitCode::OutputFormat, "cannot encode the output: " + reason + ": " + errorText(result));
}

void AudioEncoder::check(int result) {
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0)
        throw Failure(ExitCode::OutputNotWritable, "cannot encode the output: " + errorText(result));
}

void AudioEncoder::start(int64_t position, int silence, int64_t skip) {
    position_ = position;
    pending_.appendSilence(silence);
    skip_ = skip;
}

void AudioEncoder::encode(AVFrame* frame) {
    if (frame != nullptr) {
        frame->pts = position_;
        position_ += frame->nb_samples;
    }
    check(avcodec_send_frame(encoder_.get(), frame));
    while (true) {
        const int result = avcodec_receive_packet(encoder_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        check(result);
        receive_(*packet_);
        av_packet_unref(packet_.get());
    }
}

void AudioEncoder::write(const AVFrame& frame) {
    pending_.append(frame);
    if (skip_ > 0) {
        const int skipped = static_cast<int>(std::min<int64_t>(skip_, pending_.size()));
        pending_.take(skipped);
        skip_ -= skipped;
    }
    const bool any_length = (plan_.codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) != 0;
    const int length =
        any_length || encoder_->frame_size <= 0 ? kFramesWhereAnyLengthDoes : encoder_->frame_size;
    while (pending_.size() >= length) encode(pending_.take(length).get());
}

void AudioEncoder::finish() {
    if (pending_.size() > 0) encode(pending_.take(pending_.size()).get());
    encode(nullptr);
}

}  // namespace sonivex_tool
