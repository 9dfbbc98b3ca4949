#include "reframer.h"

#include <libavutil/samplefmt.h>

namespace sonivex_tool {
namespace {

constexpr int kInitialFrames = 8192;

void** planes(const AVFrame& frame) {
    return reinterpret_cast<void**>(frame.extended_data);
}

}  // namespace

Reframer::Reframer(const AudioSpec& spec)
    : spec_(spec), fifo_(allocated(av_audio_fifo_alloc(spec.format, spec.channels(), kInitialFrames))) {}

void Reframer::append(const AVFrame& frame) {
    if (frame.nb_samples == 0) return;
    if (av_audio_fifo_write(fifo_.get(), planes(frame), frame.nb_samples) < 0) throw std::bad_alloc();
}

void Reframer::appendSilence(int frames) {
    if (frames == 0) return;
    const FramePtr silence = makeFrame(spec_, frames);
    av_samples_set_silence(silence->extended_data, 0, frames, spec_.channels(), spec_.format);
    append(*silence);
}

int Reframer::size() const {
    return av_audio_fifo_size(fifo_.get());
}

FramePtr Reframer::take(int frames) {
    FramePtr frame = makeFrame(spec_, frames);
    av_audio_fifo_read(fifo_.get(), planes(*frame), frames);
    return frame;
}

}  // namespace sonivex_tool
