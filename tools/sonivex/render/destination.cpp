#include "destination.h"

namespace sonivex_tool {
namespace {

// Frames that may wait for a thread. Frames have a thousand samples or a few thousand, so this is about a
// second of audio: enough to even out the encoder's bursts.
constexpr std::size_t kWaitingFrames = 32;

}  // namespace

MeasuringThread::MeasuringThread(const AudioSpec& spec)
    : meter_(spec), thread_(kWaitingFrames, [this](const FramePtr& frame) { meter_.add(*frame); }) {}

void MeasuringThread::add(const AVFrame& frame) {
    thread_.push(FramePtr(allocated(av_frame_clone(&frame))));
}

Loudness MeasuringThread::finish() {
    thread_.finish();
    return meter_.result();
}

Destination::Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file, bool measure)
    : converter_(plan.spec),
      sink_(plan, source, file),
      encoder_(kWaitingFrames, [this](const FramePtr& frame) { sink_.write(*frame); }) {
    if (measure) meter_.emplace(plan.spec);
}

void Destination::writeConverted(FramePtr frame) {
    if (frame == nullptr) return;
    frames_ += frame->nb_samples;
    if (meter_) meter_->add(*frame);
    encoder_.push(std::move(frame));
}

void Destination::write(FramePtr frame) {
    writeConverted(converter_.convert(std::move(frame)));
}

void Destination::finish() {
    writeConverted(converter_.flush());
    if (meter_) loudness_ = meter_->finish();
    encoder_.finish();
    sink_.finish();
}

}  // namespace sonivex_tool
