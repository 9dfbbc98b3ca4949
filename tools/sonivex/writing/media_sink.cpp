#include "media_sink.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "container_choice.h"
#include "failure.h"
#include "metadata.h"

namespace sonivex_tool {
namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr char kFragmentMicroseconds[] = "1000000";

// A file that begins late keeps its streams in step but begins at 0. One that begins before 0, as a decoder's
// start-up does, keeps its times.
int64_t originOf(const AVFormatContext& source, const OutputPlan& plan) {
    if (!plan.is_film || source.start_time == AV_NOPTS_VALUE) return 0;
    return std::max<int64_t>(source.start_time, 0);
}

// Returns the number of samples between two times that the container can store: 1 if it stores every one.
int samplesPerTick(const AVOutputFormat& muxer, int rate_hz) {
    return isOneOf(muxer, "matroska webm flv")
               ? std::lcm(rate_hz, kMillisecondsPerSecond) / kMillisecondsPerSecond
               : 1;
}

std::string counted(uint64_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

bool isMp4(const AVOutputFormat& muxer) {
    return isOneOf(muxer, "mp4 mov ipod psp 3gp 3g2 f4v ismv");
}

}  // namespace

MediaSink::MediaSink(const OutputPlan& plan, const AVFormatContext& source, double audio_start_s,
                     Output& output)
    : plan_(plan),
      source_(source),
      output_(output),
      encoder_(plan.encoder, (plan.encoder.muxer->flags & AVFMT_GLOBALHEADER) != 0,
               [this](AVPacket& packet) { writeAudio(packet); }),
      origin_us_(originOf(source, plan)),
      copied_(plan.streams.size()) {
    try {
        check(avformat_alloc_output_context2(&muxer_, plan_.encoder.muxer, nullptr, nullptr));
        addStreams();
        if (plan_.chapters > 0) addChapters(source_, *muxer_, origin_us_);
        openMuxer();
        writePictures();
        startAudio(audio_start_s);
    } catch (...) {
        avformat_free_context(muxer_);
        throw;
    }
}

MediaSink::~MediaSink() {
    avformat_free_context(muxer_);
}

void MediaSink::check(int result) const {
    output_.throwIfFailed();
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0)
        throw Failure(ExitCode::OutputNotWritable, "cannot write the output: " + errorText(result));
}

void MediaSink::addStreams() {
    for (size_t i = 0; i < plan_.streams.size(); ++i) {
        const StreamPlan& stream = plan_.streams[i];
        const AVStream& source = *source_.streams[i];
        if (stream.fate == StreamFate::Rendered) {
            addRendered(source);
        } else if (stream.fate == StreamFate::LeftOut) {
            continue;
        } else if (stream.facts.kind == AVMEDIA_TYPE_ATTACHMENT) {
            addAttachment(source, *muxer_);
        } else if (stream.facts.is_picture && holdsAttachments(*plan_.encoder.muxer)) {
            addPictureAsAttachment(source, *muxer_);
        } else {
            copied_[i] = std::make_unique<CopiedStream>(source, *muxer_, origin_us_);
        }
    }
}

void MediaSink::addRendered(const AVStream& source) {
    audio_ = allocated(avformat_new_stream(muxer_, nullptr));
    audio_->time_base = encoder_.context().time_base;
    check(avcodec_parameters_from_context(audio_->codecpar, &encoder_.context()));
    copyMetadata(source_, source, *muxer_, *audio_);
}

void MediaSink::openMuxer() {
    const AVOutputFormat& muxer = *plan_.encoder.muxer;
    muxer_->pb = output_.io();
    // Without "bit exact" Matroska and Ogg get random identifiers, and two renders differ.
    muxer_->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    // AVI counts frames from its beginning, whatever their times are.
    if (isOneOf(muxer, "avi")) muxer_->avoid_negative_ts = 0;
    const bool has_pictures =
        std::any_of(plan_.streams.begin(), plan_.streams.end(), [](const StreamPlan& stream) {
            return stream.facts.is_picture && stream.fate == StreamFate::Copied;
        });
    Dictionary options;                                 // muxers ignore those that they lack
    options.set("rf64", "auto");                        // lets WAV exceed 4 GiB
    if (has_pictures) options.set("write_id3v2", "1");  // AIFF stores pictures there
    if (isMp4(muxer)) {
        // The start and the end of the audio are stored in this unit.
        options.set("movie_timescale", std::to_string(plan_.encoder.spec.rate_hz));
        if (plan_.is_streamed) {
            options.set("movflags", "+frag_keyframe+delay_moov+default_base_moof");
            options.set("frag_duration", kFragmentMicroseconds);
        }
    }
    const int result = avformat_write_header(muxer_, options.address());
    output_.throwIfFailed();
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result >= 0) return;
    refuseHeader(result);
}

// Muxers do not say which stream they refuse.
void MediaSink::refuseHeader(int result) const {
    const std::string format = plan_.encoder.muxer->name;
    const std::string name = plan_.is_streamed ? "to standard output" : "\"" + plan_.path + "\"";
    const auto is_copied = [](const StreamPlan& stream) { return stream.fate == StreamFate::Copied; };
    const auto is_moving = [](const StreamPlan& stream) {
        return stream.fate == StreamFate::Copied && stream.facts.kind == AVMEDIA_TYPE_VIDEO &&
               !stream.facts.is_picture;
    };
    std::string reason;
    if (std::none_of(plan_.streams.begin(), plan_.streams.end(), is_copied)) {
        reason = format + " files cannot hold " + avcodec_get_name(plan_.encoder.codec->id) + " with " +
                 layoutName(plan_.encoder.spec.layout);
    } else {
        const auto video = std::find_if(plan_.streams.begin(), plan_.streams.end(), is_moving);
        const std::string suspect =
            video == plan_.streams.end() ? "" : ", most likely the " + video->facts.codec_name + " video";
        reason = format + " files cannot hold one of the copied streams" + suspect +
                 "; choose another format, or --audio-only";
    }
    throw Failure(ExitCode::OutputFormat,
                  "cannot write " + name + ": " + reason + " (" + errorText(result) + ")");
}

void MediaSink::writePictures() {
    for (size_t i = 0; i < copied_.size(); ++i) {
        if (copied_[i] == nullptr || !plan_.streams[i].facts.is_picture) continue;
        const PacketPtr packet(allocated(av_packet_clone(&source_.streams[i]->attached_pic)));
        packet->pts = 0;
        packet->dts = 0;
        packet->duration = 0;
        packet->stream_index = static_cast<int>(i);
        copied_[i]->adapt(*packet);
        check(av_interleaved_write_frame(muxer_, packet.get()));
    }
}

void MediaSink::startAudio(double audio_start_s) {
    const int rate_hz = plan_.encoder.spec.rate_hz;
    int64_t start = 0;
    if (plan_.is_film) {
        const int64_t source_start_us = source_.start_time != AV_NOPTS_VALUE ? source_.start_time : 0;
        const double offset_s = static_cast<double>(source_start_us - origin_us_) / AV_TIME_BASE;
        start = std::llround((audio_start_s + offset_s) * rate_hz);
    }
    if (plan_.is_film && isOneOf(*plan_.encoder.muxer, "avi")) {
        // AVI has neither a start time nor a place for the delay of an encoder. Silence makes up for the
        // first; the second costs the first few milliseconds of the sound.
        const int64_t position = start - encoder_.context().initial_padding;
        const int silence = static_cast<int>(std::clamp<int64_t>(position, 0, INT32_MAX));
        encoder_.start(encoder_.context().initial_padding, silence, std::max<int64_t>(-position, 0));
        return;
    }
    const int64_t delay = leavesDelayToCaller(*plan_.encoder.muxer, plan_.encoder.codec->id)
                              ? encoder_.context().initial_padding
                              : 0;
    const int64_t tick = std::max(samplesPerTick(*plan_.encoder.muxer, rate_hz), 1);
    const int64_t silence = ((start % tick) + tick) % tick;
    encoder_.start(start - silence + delay, static_cast<int>(silence), 0);
}

void MediaSink::writeAudio(AVPacket& packet) {
    av_packet_rescale_ts(&packet, encoder_.context().time_base, audio_->time_base);
    packet.stream_index = audio_->index;
    check(av_interleaved_write_frame(muxer_, &packet));
}

void MediaSink::write(const AVFrame& frame) {
    encoder_.write(frame);
}

void MediaSink::copy(AVPacket& packet) {
    const auto index = static_cast<size_t>(packet.stream_index);
    const bool is_wanted =
        index < copied_.size() && copied_[index] != nullptr && !plan_.streams[index].facts.is_picture;
    if (!is_wanted || (packet.size == 0 && packet.side_data_elems == 0)) {
        av_packet_unref(&packet);
        return;
    }
    copied_[index]->adapt(packet);
    const int result = av_interleaved_write_frame(muxer_, &packet);
    if (result == AVERROR_INVALIDDATA) {
        ++damaged_packets_;
        return;
    }
    check(result);
}

void MediaSink::finish() {
    encoder_.finish();
    check(av_write_trailer(muxer_));
    avio_flush(muxer_->pb);
    output_.throwIfFailed();
}

std::vector<std::string> MediaSink::notes() const {
    uint64_t repaired = 0;
    for (const auto& stream : copied_) repaired += stream != nullptr ? stream->repaired() : 0;
    std::vector<std::string> notes;
    if (repaired > 0)
        notes.push_back("the timestamps of " + counted(repaired, "copied packet was", "copied packets were") +
                        " repaired");
    if (damaged_packets_ > 0)
        notes.push_back(counted(damaged_packets_, "damaged packet", "damaged packets") +
                        " could not be copied");
    return notes;
}

}  // namespace sonivex_tool
