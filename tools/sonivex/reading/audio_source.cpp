#include "audio_source.h"

#include <algorithm>
#include <cmath>

#include "audio_tracks.h"
#include "failure.h"
#include "interrupt.h"
#include "lead_in.h"
#include "ogg_end.h"
#include "stated_end.h"
#include "stream_choice.h"

namespace sonivex_tool {
namespace {

// Silence comes out in frames of this length at most.
constexpr int64_t kSilentFrame = 4096;
// Containers state lengths with priming, padding and rounding; one that is shorter by this is cut off.
constexpr double kMissingEnd_s = 0.25;
// A gap is damage if something failed so shortly before it. Demuxers read pages of a second or more ahead.
constexpr double kErrorReach_s = 5.0;
// No frame belongs so much later than the stated end.
constexpr double kBeyondEnd_s = 10.0;
// Packets before the first audio frame are read twice rather than kept beyond this, if the file can be.
constexpr int64_t kMostKeptOfAFile_bytes = int64_t{16} << 20U;

}  // namespace

AudioSource::AudioSource(const InputSettings& settings)
    : path_(settings.path),
      settings_(settings),
      policy_(settings.timeline),
      packet_(allocated(av_packet_alloc())) {
    file_.emplace(path_);
    const bool can_restart = file_->canRestart();
    kept_ = KeptPackets(can_restart ? std::min(kMostKeptOfAFile_bytes, settings.most_kept_bytes)
                                    : settings.most_kept_bytes);
    chooseStream(settings);
    decoder_.emplace(settings.path, stream());
    stated_end_s_ = statedEnd_s(path_, container(), stream());
    fill();
    if (frames_.empty()) {
        describeEmpty(settings.path);
    } else {
        describe();
    }
    converter_.emplace(info_.spec);
    if (kept_.isGivenUp() && can_restart) restart(settings);
    kept_.removeLimit();
}

void AudioSource::chooseStream(const InputSettings& settings) {
    AVFormatContext& file = file_->container();
    const auto [tracks, indices] = audioTracksOf(file);
    const std::string cannot_open = "cannot open \"" + settings.path + "\": it has no audio stream";
    if (tracks.empty()) throw Failure(ExitCode::NoAudio, cannot_open);
    const std::optional<size_t> chosen = chooseTrack(tracks, settings.stream);
    if (!chosen)
        throw Failure(ExitCode::NoAudio, cannot_open + " " + *settings.stream + ", only " + listOf(tracks));
    stream_index_ = indices[*chosen];
    for (unsigned i = 0; i < file.nb_streams && !settings.keeps_packets; ++i)
        file.streams[i]->discard = AVDISCARD_ALL;
    file.streams[stream_index_]->discard = AVDISCARD_DEFAULT;
    delivered_.assign(file.nb_streams, settings.keeps_packets);
    info_.stream_number = static_cast<int>(*chosen);
    info_.audio_streams = static_cast<int>(tracks.size());
    info_.language = tracks[*chosen].language;
}

void AudioSource::describe() {
    const DecodedFrame& first = frames_.front();
    info_.container = container().iformat->name;
    info_.codec = avcodec_get_name(decoder_->context().codec_id);
    info_.spec = specOf(*first.frame);
    spec_ = info_.spec;
    const int bits = decoder_->context().bits_per_raw_sample;
    if (bits > 0 && bits < 8 * av_get_bytes_per_sample(info_.spec.format)) info_.bits_per_sample = bits;
    info_.length_seconds = statedLength_s(container(), stream());
    if (first.position) first_position_s_ = static_cast<double>(*first.position) / info_.spec.rate_hz;
    const double start_s = first_position_s_.value_or(startOf_s(stream()).value_or(0.0));
    const int64_t origin = container().start_time;
    info_.start_seconds =
        start_s - (origin != AV_NOPTS_VALUE ? static_cast<double>(origin) / AV_TIME_BASE : 0.0);
    if (stated_end_s_) latest_s_ = *stated_end_s_ + kBeyondEnd_s;
    beginTimeline(info_.spec.rate_hz);
}

std::optional<double> AudioSource::knownLength_s() const {
    if (!stated_end_s_) return std::nullopt;
    return *stated_end_s_ - first_position_s_.value_or(0.0);
}

void AudioSource::beginTimeline(int rate_hz) {
    timeline_.emplace(rate_hz, latest_s_);
    if (isBareStream(container())) timeline_->forbidOverlaps();
}

void AudioSource::describeEmpty(const std::string& path) {
    const AVCodecContext& codec = decoder_->context();
    const bool is_valid = errorsSoFar() == 0 && codec.sample_rate > 0 && codec.ch_layout.nb_channels > 0 &&
                          codec.sample_fmt != AV_SAMPLE_FMT_NONE;
    if (!is_valid)
        throw Failure(ExitCode::NoAudio,
                      "cannot decode \"" + path + "\": its audio stream yields no samples");
    FramePtr described(allocated(av_frame_alloc()));
    described->format = codec.sample_fmt;
    described->sample_rate = codec.sample_rate;
    if (av_channel_layout_copy(&described->ch_layout, &codec.ch_layout) < 0) throw std::bad_alloc();
    frames_.push({std::move(described), std::nullopt, false});
    describe();
    frames_.drop();
    info_.has_samples = false;
    info_.length_seconds = 0.0;
}

void AudioSource::deliverPackets(const std::vector<bool>& streams) {
    AVFormatContext& file = file_->container();
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const bool is_ours = static_cast<int>(i) == stream_index_;
        delivered_[i] = i < streams.size() && streams[i] && !is_ours;
        if (!delivered_[i] && !is_ours) file.streams[i]->discard = AVDISCARD_ALL;
    }
    kept_.keepOnly(delivered_);
    if (kept_.isGivenUp() && std::find(delivered_.begin(), delivered_.end(), true) != delivered_.end())
        throw Failure(ExitCode::InputNotReadable,
                      "cannot copy other streams of \"" + path_ +
                          "\": its audio begins too late to read it from a pipe; read it from a file");
}

void AudioSource::insertLeadIn() {
    if (policy_ == TimelinePolicy::Ignore || !first_position_s_) return;
    const std::optional<double> lead_in_s = leadIn_s(container(), stream(), *first_position_s_);
    if (!lead_in_s) ++timeline_report_.jumps;
    timeline_report_.lead_in_s = lead_in_s.value_or(0.0);
    silence_ += std::llround(timeline_report_.lead_in_s * info_.spec.rate_hz);
}

uint64_t AudioSource::errorsSoFar() const {
    const ReadFaults faults = file_->faults();
    return faults.errors + faults.corrupt_packets + faults.messages + decoder_->errors();
}

void AudioSource::readPacket() {
    const uint64_t messages_before = file_->faults().messages;
    if (!file_->read(*packet_)) {
        reader_is_at_end_ = true;
        decoder_->sendEnd();
        takeFrames();
        frames_.end();
        return;
    }
    messages_before_packet_ = messages_before;
    const auto index = static_cast<size_t>(packet_->stream_index);
    if (packet_->stream_index == stream_index_) {
        decoder_->send(*packet_);
        takeFrames();
    } else if (index < delivered_.size() && delivered_[index]) {
        kept_.push(std::move(packet_));
        packet_.reset(allocated(av_packet_alloc()));
    }
}

void AudioSource::takeFrames() {
    while (FramePtr frame = decoder_->receive()) {
        const std::optional<int64_t> position = positionOf(*frame, stream().time_base);
        const uint64_t errors = errorsSoFar();
        const AudioSpec spec = specOf(*frame);
        if (decoded_spec_ && !(spec == *decoded_spec_) && errors > errors_before_frame_) {
            // A damaged packet may have told the decoder about audio that does not exist. If the change is
            // real, the decoder finds it again.
            decoder_->restart();
            ++invented_frames_;
            continue;
        }
        decoded_spec_ = spec;
        frames_.push({std::move(frame), position, errors > errors_before_frame_});
        errors_before_frame_ = errors;
    }
}

void AudioSource::fill() {
    while (!reader_is_at_end_ && !frames_.isReady()) readPacket();
}

// Drops the first waiting frame if damage made it up.
bool AudioSource::dropsFront() {
    if (frames_.isCredible(*spec_)) return false;
    frames_.front().follows_error = true;
    frames_.drop();
    ++invented_frames_;
    return true;
}

void AudioSource::placeFront() {
    DecodedFrame& front = frames_.front();
    const AudioSpec spec = specOf(*front.frame);
    if (spec.rate_hz != spec_->rate_hz) timeline_->setRate(spec.rate_hz);
    spec_ = spec;
    const Correction correction = timeline_->place(frames_.placements());
    front_is_placed_ = true;
    if (policy_ == TimelinePolicy::Ignore) return;
    const double filled_s = static_cast<double>(correction.silence) / spec.rate_hz;
    silence_ += correction.silence;
    if (frames_.isNearError()) last_error_s_ = output_s_;
    if (correction.silence > 0 && last_error_s_ && output_s_ - *last_error_s_ <= kErrorReach_s) {
        damage_.filled_s += filled_s;
    } else if (correction.silence > 0) {
        ++timeline_report_.gaps;
        timeline_report_.filled_s += filled_s;
    }
    if (correction.is_jump && !isBareStream(container())) ++timeline_report_.jumps;
    if (correction.cut > 0) {
        if (correction.begins_overlap) ++timeline_report_.overlaps;
        timeline_report_.cut_s += static_cast<double>(correction.cut) / spec.rate_hz;
        const auto cut = static_cast<int>(correction.cut);
        trimFrame(*front.frame, cut, front.frame->nb_samples - cut);
    }
}

FramePtr AudioSource::silence() {
    const auto length = static_cast<int>(std::min(silence_, kSilentFrame));
    FramePtr frame = makeFrame(*spec_, length);
    av_samples_set_silence(frame->extended_data, 0, length, spec_->channels(), spec_->format);
    silence_ -= length;
    return frame;
}

void AudioSource::finish() {
    if (is_finished_) return;
    is_finished_ = true;
    const ReadFaults faults = file_->faults();
    damage_.ends_prematurely =
        faults.is_given_up || faults.messages > messages_before_packet_ || endsWithinOggPage(path_);
    if (!stated_end_s_ || !info_.has_samples) return;
    const double end_s = timeline_->end_s().value_or(first_position_s_.value_or(0.0) + output_s_);
    if (*stated_end_s_ - end_s > (damage_.ends_prematurely ? 0.0 : kMissingEnd_s))
        damage_.missing_end_s = *stated_end_s_ - end_s;
}

SourceItem AudioSource::next() {
    while (true) {
        throwIfInterrupted();
        if (PacketPtr packet = kept_.pop()) return {nullptr, std::move(packet)};
        if (!frames_.isReady()) {
            if (!reader_is_at_end_) {
                readPacket();
                continue;
            }
            finish();
            return {};
        }
        if (!front_is_placed_) {
            if (dropsFront()) continue;
            placeFront();
        }
        FramePtr frame;
        if (silence_ > 0) {
            frame = silence();
        } else {
            frame = frames_.pop();
            front_is_placed_ = false;
            if (frame->nb_samples == 0) continue;
        }
        output_s_ += static_cast<double>(frame->nb_samples) / frame->sample_rate;
        return {std::move(frame), nullptr};
    }
}

FramePtr AudioSource::read() {
    while (true) {
        FramePtr frame = next().frame;
        if (frame == nullptr) return converter_->flush();
        FramePtr converted = converter_->convert(std::move(frame));
        if (converted != nullptr) return converted;
    }
}

DamageReport AudioSource::damageReport() const {
    DamageReport report = damage_;
    const ReadFaults faults = file_->faults();
    report.read_errors = faults.errors;
    report.corrupt_packets = faults.corrupt_packets;
    report.decode_errors = decoder_->errors() + invented_frames_;
    return report;
}

}  // namespace sonivex_tool
