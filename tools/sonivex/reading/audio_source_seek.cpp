// Where an AudioSource reads: from its beginning again, from another position, or no more.

#include <algorithm>
#include <cmath>

#include "audio_source.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

// Decoders need the packets before a position to decode it as in one go: Opus asks for 80 ms, and MP3 frames
// borrow bits from up to 0.25 s before.
constexpr double kRunUp_s = 0.3;

}  // namespace

// Reads the file from its beginning again, with what is known of its audio.
void AudioSource::restart(const InputSettings& settings) {
    decoder_.reset();
    frames_ = DecodedFrames();
    kept_ = KeptPackets(0);
    file_->rewind();
    {
        const std::lock_guard lock(file_mutex_);
        file_.emplace(path_);
        if (is_abandoned_) file_->abandon();
    }
    const int old_index = stream_index_;
    chooseStream(settings);
    if (stream_index_ != old_index)
        throw Failure(ExitCode::InputNotReadable, "cannot read \"" + path_ + "\": it changed meanwhile");
    decoder_.emplace(path_, stream());
    decoded_spec_.reset();
    reader_is_at_end_ = false;
    errors_before_frame_ = 0;
    invented_frames_ = 0;
}

void AudioSource::abandon() {
    is_abandoned_ = true;
    const std::lock_guard lock(file_mutex_);
    if (file_) file_->abandon();
}

void AudioSource::forgetFrames() {
    frames_ = DecodedFrames();
    kept_ = KeptPackets(0);
    decoded_spec_.reset();
    last_error_s_.reset();
    silence_ = 0;
    front_is_placed_ = false;
    reader_is_at_end_ = false;
    is_finished_ = false;
    errors_before_frame_ = errorsSoFar();
    converter_.emplace(info_.spec);
}

// Seeks in the container and tells whether that led to the target or before it.
bool AudioSource::reachesWithSeek(double target_s) {
    if (!first_position_s_ || !file_->seek(stream_index_, target_s - kRunUp_s)) return false;
    decoder_->flush();
    forgetFrames();
    while (frames_.empty() && !reader_is_at_end_) readPacket();
    if (frames_.empty()) return true;  // at the end
    const DecodedFrame& first = frames_.front();
    return first.position && static_cast<double>(*first.position) / first.frame->sample_rate <= target_s;
}

// Drops what is decoded before the target, and returns where the rest begins.
double AudioSource::dropUntil(double target_s) {
    double position_s = first_position_s_.value_or(0.0);
    while (true) {
        if (frames_.empty()) {
            if (reader_is_at_end_) return position_s;
            readPacket();
            continue;
        }
        DecodedFrame& front = frames_.front();
        const int rate_hz = front.frame->sample_rate;
        if (front.position) position_s = static_cast<double>(*front.position) / rate_hz;
        const auto early = static_cast<int64_t>(std::llround((target_s - position_s) * rate_hz));
        if (early <= 0) return position_s;
        const int length = front.frame->nb_samples;
        position_s += static_cast<double>(std::min<int64_t>(early, length)) / rate_hz;
        if (early >= length) {
            frames_.drop();
            continue;
        }
        trimFrame(*front.frame, static_cast<int>(early), length - static_cast<int>(early));
        if (front.position) *front.position += early;
        return position_s;
    }
}

double AudioSource::seek(double seconds) {
    const double first_s = first_position_s_.value_or(0.0);
    const double target_s = first_s + std::max(seconds, 0.0);
    if (!reachesWithSeek(target_s)) {
        restart(settings_);
        forgetFrames();
    }
    double position_s = dropUntil(target_s);
    // Nothing is left to tell where the file ends, and what was skipped is not lost.
    if (frames_.empty() && stated_end_s_)
        position_s = std::max(position_s, std::min(target_s, *stated_end_s_));
    const int rate_hz = frames_.empty() ? info_.spec.rate_hz : frames_.front().frame->sample_rate;
    beginTimeline(rate_hz);
    if (!frames_.empty()) spec_ = specOf(*frames_.front().frame);
    // In a damaged file the last times may be before the first one.
    output_s_ = std::max(position_s - first_s, 0.0);
    return output_s_;
}

}  // namespace sonivex_tool
