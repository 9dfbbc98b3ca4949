#include "audio_sink.h"

#include "failure.h"
#include "metadata.h"

namespace sonivex_tool {
namespace {

constexpr int kFramesWhereAnyLengthDoes = 4096;

}  // namespace

AudioSink::AudioSink(const EncoderPlan& plan, const AudioSource& source, OutputFile& file)
    : mPlan(plan), mFile(file), mPacket(allocated(av_packet_alloc())), mPending(plan.spec) {
    try {
        check(avformat_alloc_output_context2(&mMuxer, mPlan.muxer, nullptr, nullptr));
        openEncoder();
        openMuxer(source);
    } catch (...) {
        avformat_free_context(mMuxer);
        throw;
    }
}

AudioSink::~AudioSink() {
    avformat_free_context(mMuxer);
}

void AudioSink::check(int result) const {
    mFile.throwIfFailed();
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0)
        throw Failure(ExitCode::OutputNotWritable, "the output cannot be encoded: " + errorText(result));
}

void AudioSink::openEncoder() {
    mEncoder.reset(allocated(avcodec_alloc_context3(mPlan.codec)));
    mEncoder->sample_fmt = mPlan.spec.format;
    mEncoder->sample_rate = mPlan.spec.rateHz;
    mEncoder->time_base = {1, mPlan.spec.rateHz};
    mEncoder->bits_per_raw_sample = mPlan.bitsPerSample;
    if (mPlan.bitRate > 0) mEncoder->bit_rate = mPlan.bitRate;
    check(av_channel_layout_copy(&mEncoder->ch_layout, &mPlan.spec.layout));
    if ((mPlan.muxer->flags & AVFMT_GLOBALHEADER) != 0) mEncoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int result = avcodec_open2(mEncoder.get(), mPlan.codec, nullptr);
    if (result < 0) {
        throw Failure(ExitCode::OutputFormat, std::string(avcodec_get_name(mPlan.codec->id)) +
                                                  " cannot hold " + layoutName(mPlan.spec.layout) + " at " +
                                                  std::to_string(mPlan.spec.rateHz) +
                                                  " Hz: " + errorText(result));
    }
}

void AudioSink::openMuxer(const AudioSource& source) {
    mStream = allocated(avformat_new_stream(mMuxer, nullptr));
    mStream->time_base = mEncoder->time_base;
    check(avcodec_parameters_from_context(mStream->codecpar, mEncoder.get()));
    copyMetadata(source.container(), source.stream(), *mMuxer, *mStream);
    mMuxer->pb = mFile.io();
    mMuxer->flags |= AVFMT_FLAG_CUSTOM_IO;
    Dictionary options;
    options.set("rf64", "auto");  // WAV beyond 4 GiB; other formats do not know it
    const int result = avformat_write_header(mMuxer, options.address());
    mFile.throwIfFailed();
    if (result < 0) {
        throw Failure(ExitCode::OutputFormat, std::string(mPlan.muxer->name) + " cannot hold " +
                                                  avcodec_get_name(mPlan.codec->id) + " with " +
                                                  layoutName(mPlan.spec.layout) + ": " + errorText(result));
    }
}

void AudioSink::encode(AVFrame* frame) {
    if (frame != nullptr) {
        frame->pts = mPosition;
        mPosition += frame->nb_samples;
    }
    check(avcodec_send_frame(mEncoder.get(), frame));
    while (true) {
        const int result = avcodec_receive_packet(mEncoder.get(), mPacket.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        check(result);
        av_packet_rescale_ts(mPacket.get(), mEncoder->time_base, mStream->time_base);
        mPacket->stream_index = mStream->index;
        check(av_interleaved_write_frame(mMuxer, mPacket.get()));
    }
}

void AudioSink::write(const AVFrame& frame) {
    mPending.append(frame);
    const bool anyLength = (mPlan.codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) != 0;
    const int length =
        anyLength || mEncoder->frame_size <= 0 ? kFramesWhereAnyLengthDoes : mEncoder->frame_size;
    while (mPending.size() >= length) encode(mPending.take(length).get());
}

void AudioSink::finish() {
    if (mPending.size() > 0) encode(mPending.take(mPending.size()).get());
    encode(nullptr);
    check(av_write_trailer(mMuxer));
    avio_flush(mMuxer->pb);
    mFile.throwIfFailed();
}

}  // namespace sonivex_tool
