#include "destination.h"

namespace sonivex_tool {
namespace {

// Frames and packets that may wait for the encoder. Frames have a thousand samples or more, so this is about
// a second: enough to even out the encoder's bursts.
constexpr std::size_t kWaitingItems = 64;

}  // namespace

Destination::Destination(const OutputPlan& plan, const AVFormatContext& source, double audio_start_s,
                         Output& output, const DestinationSettings& settings)
    : converter_(plan.encoder.spec, {.dither = settings.dither, .bits = plan.encoder.bits_per_sample}),
      sink_(plan, source, audio_start_s, output),
      encoder_(kWaitingItems, [this](const Item& item) {
          if (item.frame != nullptr) sink_.write(*item.frame);
          if (item.packet != nullptr) sink_.copy(*item.packet);
      }) {
    if (settings.level) {
        level_.emplace(plan.encoder.spec, *settings.level,
                       [this](FramePtr frame) { writeConverted(converter_.convert(std::move(frame))); });
    }
    if (settings.measure) {
        meter_.emplace(plan.encoder.spec, settings.level ? Peaks::SamplesAndTruePeak : Peaks::Samples);
    }
}

void Destination::writeConverted(FramePtr frame) {
    if (frame == nullptr) return;
    frames_ += frame->nb_samples;
    if (meter_) meter_->add(*frame);
    encoder_.push({std::move(frame), nullptr});
}

void Destination::write(FramePtr frame) {
    if (level_) {
        level_->push(std::move(frame));
    } else {
        writeConverted(converter_.convert(std::move(frame)));
    }
}

void Destination::copy(PacketPtr packet) {
    encoder_.push({nullptr, std::move(packet)});
}

void Destination::finish() {
    if (level_) level_->finish();
    writeConverted(converter_.flush());
    if (meter_) loudness_ = meter_->finish();
    encoder_.finish();
    sink_.finish();
}

}  // namespace sonivex_tool
