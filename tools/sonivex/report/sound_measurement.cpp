#include "sound_measurement.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace sonivex_tool {
namespace {

constexpr std::size_t kMostStretches = 2048;
constexpr std::size_t kMostColumns = 800;

// libebur128 measures neither very low nor very high rates. Those are measured at the rate at which they
// are heard.
AudioSpec measurableSpec(AudioSpec spec) {
    if (!whyUnmeasurable(spec).empty()) spec.rate_hz = kPageRate_hz;
    return spec;
}

// 20 bits reject aliases by 120 dB, more than Opus keeps.
constexpr ConverterOptions kHeardConversion{.precision_bits = 20};

FramePtr referenceTo(const AVFrame& frame) {
    return FramePtr(allocated(av_frame_clone(&frame)));
}

std::span<const float> stereoSamples(const AVFrame& frame) {
    return {reinterpret_cast<const float*>(frame.extended_data[0]),
            2 * static_cast<std::size_t>(frame.nb_samples)};
}

}  // namespace

AudioSpec heardSpec() {
    return {.format = AV_SAMPLE_FMT_FLT, .rate_hz = kPageRate_hz, .layout = defaultLayout(2)};
}

SoundMeasurement::SoundMeasurement(const AudioSpec& spec, PresenceMeter* presence)
    : spec_(spec),
      to_measurable_(measurableSpec(spec)),
      loudness_(measurableSpec(spec)),
      to_stereo_(heardSpec(), kHeardConversion),
      waveform_(kMostStretches),
      spectrogram_(kPageRate_hz, kMostColumns),
      presence_(presence) {}

void SoundMeasurement::addStereo(const AVFrame* frame) {
    if (frame == nullptr) return;
    const std::span<const float> samples = stereoSamples(*frame);
    waveform_.add(samples, 2);
    spectrogram_.add(samples);
    if (presence_ != nullptr) presence_->addOutput(samples);
}

void SoundMeasurement::add(const AVFrame& frame) {
    frames_ += frame.nb_samples;
    if (const FramePtr measurable = to_measurable_.convert(referenceTo(frame))) loudness_.add(*measurable);
    addStereo(to_stereo_.convert(referenceTo(frame)).get());
}

void SoundMeasurement::finish(MeasuredVersion& version) {
    if (const FramePtr rest = to_measurable_.flush()) loudness_.add(*rest);
    addStereo(to_stereo_.flush().get());
    version.spec = spec_;
    version.frames = frames_;
    version.loudness = loudness_.finish();
    version.waveform = waveform_.extents();
    version.stretch_s = static_cast<double>(waveform_.stretch_frames()) / kPageRate_hz;
    version.spectrogram = spectrogram_.finish();
    version.column_s = spectrogram_.column_s();
}

HeardSound::HeardSound(const SoundPlan& plan)
    : start_(std::llround(plan.start_s * kPageRate_hz)),
      end_(std::llround((plan.start_s + plan.length_s) * kPageRate_hz)),
      to_stereo_(heardSpec(), kHeardConversion),
      meter_(heardSpec(), Peaks::SamplesAndTruePeak),
      opus_(plan.rate_bps) {}

void HeardSound::addStereo(FramePtr frame) {
    if (frame == nullptr) return;
    const int64_t first = position_;
    position_ += frame->nb_samples;
    const int64_t from = std::max(first, start_);
    const int64_t until = std::min(position_, end_);
    if (from >= until) return;
    trimFrame(*frame, static_cast<int>(from - first), static_cast<int>(until - from));
    meter_.add(*frame);
    opus_.add(stereoSamples(*frame));
}

void HeardSound::add(const AVFrame& frame) {
    addStereo(to_stereo_.convert(referenceTo(frame)));
}

void HeardSound::finish(MeasuredVersion& version) {
    addStereo(to_stereo_.flush());
    version.heard = meter_.result();
    version.opus = opus_.finish();
}

}  // namespace sonivex_tool
