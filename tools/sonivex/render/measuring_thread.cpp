#include "measuring_thread.h"

namespace sonivex_tool {
namespace {

constexpr std::size_t kWaitingFrames = 32;  // about a second of audio

}  // namespace

MeasuringThread::MeasuringThread(const AudioSpec& spec, Peaks peaks)
    : meter_(spec, peaks), thread_(kWaitingFrames, [this](const FramePtr& frame) { meter_.add(*frame); }) {}

void MeasuringThread::add(const AVFrame& frame) {
    thread_.push(FramePtr(allocated(av_frame_clone(&frame))));
}

Loudness MeasuringThread::finish() {
    thread_.finish();
    return meter_.result();
}

}  // namespace sonivex_tool
