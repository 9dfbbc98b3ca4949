#include "sample_line.h"

#include <algorithm>
#include <new>

#include "vorlin/av_compat.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/error.h>
#include <libavutil/samplefmt.h>
}

namespace Vorlin {

namespace {

constexpr int kSilencePiece_frames = 1024;

bool planeHolds(const AVFrame& frame, int plane, size_t bytes) {
    const uint8_t* data = frame.extended_data[plane];
    if (data == nullptr) return false;
    if (frame.buf[0] ==
        nullptr) {  // samples without a reference count: only the line size tells their length
        return frame.linesize[0] == 0 ||
               static_cast<int64_t>(frame.linesize[0]) >= static_cast<int64_t>(bytes);
    }
    const AVBufferRef* buffer = av_frame_get_plane_buffer(const_cast<AVFrame*>(&frame), plane);
    return buffer != nullptr && data >= buffer->data && data <= buffer->data + buffer->size &&
           static_cast<size_t>(buffer->data + buffer->size - data) >= bytes;
}

void** planesOf(const AVFrame& frame) {
    return reinterpret_cast<void**>(frame.extended_data);
}

}  // namespace

bool holdsAudio(const AVFrame* frame, const IQFFrame::audioInfo& info) {
    if (frame == nullptr || frame->format < 0 || frame->format >= AV_SAMPLE_FMT_NB) return false;
    if (frame->format != info.format || frame->ch_layout.nb_channels != info.channels ||
        frame->sample_rate != info.sample_rate || frame->nb_samples != info.nb_samples) {
        return false;
    }
    if (info.channels <= 0 || info.sample_rate <= 0 || frame->nb_samples < 0) return false;
    if (frame->nb_samples == 0) return true;
    if (frame->extended_data == nullptr) return false;

    const auto format = static_cast<AVSampleFormat>(frame->format);
    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int planes = is_planar ? info.channels : 1;
    const size_t bytes = static_cast<size_t>(frame->nb_samples) *
                         static_cast<size_t>(is_planar ? 1 : info.channels) *
                         static_cast<size_t>(av_get_bytes_per_sample(format));
    for (int plane = 0; plane < planes; ++plane) {
        if (!planeHolds(*frame, plane, bytes)) return false;
    }
    return true;
}

OwnedAVFrame makeFrameLike(const AVFrame& like, int frames) {
    OwnedAVFrame frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = like.format;
    frame->sample_rate = like.sample_rate;
    frame->nb_samples = frames;
    if (av::setFrameLayout(frame.get(), like.ch_layout) < 0) return nullptr;
    if (frames > 0 && av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    return frame;
}

void SampleLine::FifoDeleter::operator()(AVAudioFifo* fifo) const {
    av_audio_fifo_free(fifo);
}

SampleLine::SampleLine() = default;
SampleLine::~SampleLine() = default;

int SampleLine::size() const {
    return mFifo ? av_audio_fifo_size(mFifo.get()) : 0;
}

int SampleLine::append(const AVFrame& frame) {
    if (!mFifo) {
        mLike = makeFrameLike(frame, 0);
        if (!mLike) return AVERROR(ENOMEM);
        mFifo.reset(av_audio_fifo_alloc(static_cast<AVSampleFormat>(frame.format),
                                        frame.ch_layout.nb_channels, std::max(frame.nb_samples, 1)));
        if (!mFifo) return AVERROR(ENOMEM);
    }
    const int result = av_audio_fifo_write(mFifo.get(), planesOf(frame), frame.nb_samples);
    // Without memory for every plane, libavutil lets some of them grow. Its queue fails for ever then.
    if (result < 0) throw std::bad_alloc();
    return 0;
}

OwnedAVFrame SampleLine::makeSilence(int frames) const {
    OwnedAVFrame silence = mLike ? makeFrameLike(*mLike, frames) : nullptr;
    if (silence) {
        av_samples_set_silence(silence->extended_data, 0, frames, silence->ch_layout.nb_channels,
                               static_cast<AVSampleFormat>(silence->format));
    }
    return silence;
}

int SampleLine::appendSilence(int64_t frames) {
    if (frames <= 0) return 0;
    const OwnedAVFrame silence = makeSilence(kSilencePiece_frames);
    if (!silence) return AVERROR(ENOMEM);
    while (frames > 0) {
        silence->nb_samples = static_cast<int>(std::min<int64_t>(frames, kSilencePiece_frames));
        if (const int result = append(*silence); result < 0) return result;
        frames -= silence->nb_samples;
    }
    return 0;
}

OwnedAVFrame SampleLine::take(int frames) {
    OwnedAVFrame frame = makeFrameLike(*mLike, frames);
    if (frame && av_audio_fifo_read(mFifo.get(), planesOf(*frame), frames) == frames) return frame;
    av_audio_fifo_drain(mFifo.get(), frames);
    return nullptr;
}

void SampleLine::clear() {
    mFifo.reset();
    mLike.reset();
}

}  // namespace Vorlin
