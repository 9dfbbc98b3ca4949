#include "measuring_thread.h"

#include <libavutil/samplefmt.h>

namespace sonivex_tool {
namespace {

constexpr std::size_t kWaitingFrames = 32;  // about a second of audio

}  // namespace

MeasuringThread::MeasuringThread(const AudioSpec& spec, Peaks peaks)
    : meter_(spec, peaks), thread_(kWaitingFrames, [this](const FramePtr& frame) { meter_.add(*frame); }) {}

void MeasuringThread::add(const AVFrame& frame) {
    const AudioSpec spec = specOf(frame);
    FramePtr copy = makeFrame(spec, frame.nb_samples);
    av_samples_copy(copy->extended_data, frame.extended_data, 0, 0, frame.nb_samples, spec.channels(),
                    spec.format);
    thread_.push(std::move(copy));
}

Loudness MeasuringThread::finish() {
    thread_.finish();
    return meter_.result();
}

}  // namespace sonivex_tool
