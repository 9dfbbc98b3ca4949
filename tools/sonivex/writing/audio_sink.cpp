#include "audio_sink.h"

#include "failure.h"
#include "metadata.h"

namespace sonivex_tool {
namespace {

// Frames per call of an encoder that accepts any length.
constexpr int kFramesWhereAnyLengthDoes = 4096;

}  // namespace

AudioSink::AudioSink(const EncoderPlan& plan, const AudioSource& source, OutputFile& file)
    : plan_(plan), file_(file), packet_(allocated(av_packet_alloc())), pending_(plan.spec) {
    try {
        check(avformat_alloc_output_context2(&muxer_, plan_.muxer, nullptr, nullptr));
        openEncoder();
        openMuxer(source);
    } catch (...) {
        avformat_free_context(muxer_);
        throw;
    }
}

AudioSink::~AudioSink() {
    avformat_free_context(muxer_);
}

void AudioSink::check(int result) const {
    file_.throwIfFailed();
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0)
        throw Failure(ExitCode::OutputNotWritable, "cannot encode the output: " + errorText(result));
}

void AudioSink::openEncoder() {
    encoder_.reset(allocated(avcodec_alloc_context3(plan_.codec)));
    encoder_->sample_fmt = plan_.spec.format;
    encoder_->sample_rate = plan_.spec.rate_hz;
    encoder_->time_base = {1, plan_.spec.rate_hz};
    encoder_->bits_per_raw_sample = plan_.bits_per_sample;
    if (plan_.bit_rate > 0) encoder_->bit_rate = plan_.bit_rate;
    check(av_channel_layout_copy(&encoder_->ch_layout, &plan_.spec.layout));
    if ((plan_.muxer->flags & AVFMT_GLOBALHEADER) != 0) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int result = avcodec_open2(encoder_.get(), plan_.codec, nullptr);
    if (result < 0) {
        throw Failure(ExitCode::OutputFormat,
                      std::string("cannot encode the output: ") + avcodec_get_name(plan_.codec->id) +
                          " does not support " + layoutName(plan_.spec.layout) + " at " +
                          std::to_string(plan_.spec.rate_hz) + " Hz: " + errorText(result));
    }
}

void AudioSink::openMuxer(const AudioSource& source) {
    stream_ = allocated(avformat_new_stream(muxer_, nullptr));
    stream_->time_base = encoder_->time_base;
    check(avcodec_parameters_from_context(stream_->codecpar, encoder_.get()));
    copyMetadata(source.container(), source.stream(), *muxer_, *stream_);
    muxer_->pb = file_.io();
    muxer_->flags |= AVFMT_FLAG_CUSTOM_IO;
    Dictionary options;
    options.set("rf64", "auto");  // lets WAV exceed 4 GiB; other muxers ignore it
    const int result = avformat_write_header(muxer_, options.address());
    file_.throwIfFailed();
    if (result < 0) {
        throw Failure(ExitCode::OutputFormat, std::string("cannot write the output: ") + plan_.muxer->name +
                                                  " does not support " + avcodec_get_name(plan_.codec->id) +
                                                  " with " + layoutName(plan_.spec.layout) + ": " +
                                                  errorText(result));
    }
}

void AudioSink::encode(AVFrame* frame) {
    if (frame != nullptr) {
        frame->pts = position_;
        position_ += frame->nb_samples;
    }
    check(avcodec_send_frame(encoder_.get(), frame));
    while (true) {
        const int result = avcodec_receive_packet(encoder_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        check(result);
        av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        check(av_interleaved_write_frame(muxer_, packet_.get()));
    }
}

void AudioSink::write(const AVFrame& frame) {
    pending_.append(frame);
    const bool any_length = (plan_.codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) != 0;
    const int length =
        any_length || encoder_->frame_size <= 0 ? kFramesWhereAnyLengthDoes : encoder_->frame_size;
    while (pending_.size() >= length) encode(pending_.take(length).get());
}

void AudioSink::finish() {
    if (pending_.size() > 0) encode(pending_.take(pending_.size()).get());
    encode(nullptr);
    check(av_write_trailer(muxer_));
    avio_flush(muxer_->pb);
    file_.throwIfFailed();
}

}  // namespace sonivex_tool
