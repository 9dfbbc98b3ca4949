#include "audio_decoder.h"

#include <cmath>

#include "failure.h"

namespace sonivex_tool {
namespace {

constexpr double kLatestPosition_s = 1e9;  // about 32 years: clocks count from 1970 at the earliest
constexpr int kMostErrorsInARow = 100;     // after which a decoder has nothing left of a packet

}  // namespace

AudioDecoder::AudioDecoder(const std::string& path, const AVStream& stream) : path_(path), stream_(stream) {
    restart();
}

void AudioDecoder::restart() {
    const AVCodec* codec = avcodec_find_decoder(stream_.codecpar->codec_id);
    if (codec == nullptr) {
        throw Failure(ExitCode::NoAudio, "cannot decode \"" + path_ +
                                             "\": there is no decoder for its audio (" +
                                             avcodec_get_name(stream_.codecpar->codec_id) + ")");
    }
    context_.reset(allocated(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(context_.get(), stream_.codecpar);
    // The decoder needs the time base to tell how much of the first and the last packet is padding.
    context_->pkt_timebase = stream_.time_base;
    if (result >= 0) result = avcodec_open2(context_.get(), codec, nullptr);
    if (result < 0)
        throw Failure(ExitCode::NoAudio, "cannot decode \"" + path_ + "\": " + inputErrorText(result));
}

void AudioDecoder::flush() {
    avcodec_flush_buffers(context_.get());
}

void AudioDecoder::send(const AVPacket& packet) {
    // A packet without data would end the input.
    if (packet.size == 0) return;
    ++packets_;
    if (avcodec_send_packet(context_.get(), &packet) < 0) ++errors_;
}

void AudioDecoder::sendEnd() {
    (void)avcodec_send_packet(context_.get(), nullptr);
}

FramePtr AudioDecoder::receive() {
    FramePtr frame(allocated(av_frame_alloc()));
    for (int errors_in_row = 0; errors_in_row < kMostErrorsInARow;) {
        const int result = avcodec_receive_frame(context_.get(), frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return nullptr;
        if (result < 0) {
            ++errors_;
            ++errors_in_row;
            continue;
        }
        if (frame->nb_samples > 0 && frame->sample_rate > 0 && frame->ch_layout.nb_channels > 0) return frame;
        av_frame_unref(frame.get());
    }
    return nullptr;
}

std::optional<int64_t> positionOf(const AVFrame& frame, AVRational time_base) {
    if (frame.pts == AV_NOPTS_VALUE) return std::nullopt;
    if (std::abs(static_cast<double>(frame.pts) * av_q2d(time_base)) > kLatestPosition_s) return std::nullopt;
    return av_rescale_q(frame.pts, time_base, {1, frame.sample_rate});
}

}  // namespace sonivex_tool
