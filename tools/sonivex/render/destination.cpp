#include "destination.h"

namespace sonivex_tool {
namespace {

// Frames that may wait for the encoder. They have a thousand samples or more, so this is about a second:
// enough to even out the encoder's bursts.
constexpr std::size_t kWaitingFrames = 32;

}  // namespace

Destination::Destination(const EncoderPlan& plan, const AudioSource& source, OutputFile& file,
                         const DestinationSettings& settings)
    : converter_(plan.spec, {.dither = settings.dither, .bits = plan.bits_per_sample}),
      sink_(plan, source, file),
      encoder_(kWaitingFrames, [this](const FramePtr& frame) { sink_.write(*frame); }) {
    if (settings.level) {
        level_.emplace(plan.spec, *settings.level,
                       [this](FramePtr frame) { writeConverted(converter_.convert(std::move(frame))); });
    }
    if (settings.measure)
        meter_.emplace(plan.spec, settings.level ? Peaks::SamplesAndTruePeak : Peaks::Samples);
}

void Destination::writeConverted(FramePtr frame) {
    if (frame == nullptr) return;
    frames_ += frame->nb_samples;
    if (meter_) meter_->add(*frame);
    encoder_.push(std::move(frame));
}

void Destination::write(FramePtr frame) {
    if (level_) {
        level_->push(std::move(frame));
    } else {
        writeConverted(converter_.convert(std::move(frame)));
    }
}

void Destination::finish() {
    if (level_) level_->finish();
    writeConverted(converter_.flush());
    if (meter_) loudness_ = meter_->finish();
    encoder_.finish();
    sink_.finish();
}

}  // namespace sonivex_tool
