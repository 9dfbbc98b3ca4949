#include "audio_source.h"

#include <filesystem>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

int stopReading(void* is_abandoned) {
    return pendingSignal() != 0 || *static_cast<std::atomic<bool>*>(is_abandoned) ? 1 : 0;
}

// Prefixes the path of an existing file with "file:", because libavformat would otherwise treat a colon in
// its name as the end of a protocol. Rejects a folder.
std::string asUrl(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) {
        throw Failure(ExitCode::InputNotReadable, "cannot open \"" + path + "\": it is a folder");
    }
    return std::filesystem::exists(status) ? "file:" + path : path;
}

}  // namespace

AudioSource::AudioSource(const InputSettings& settings) {
    const std::string& path = settings.path;
    packet_.reset(allocated(av_packet_alloc()));
    try {
        openContainer(path);
        chooseStream(path, settings.stream ? std::atoi(settings.stream->c_str()) : 0);
        openDecoder(path);
        first_ = decode();
        if (first_ == nullptr)
            throw Failure(ExitCode::NoAudio,
                          "cannot decode \"" + path + "\": its audio stream yields no samples");
        describe();
    } catch (...) {
        avformat_close_input(&container_);
        throw;
    }
}

AudioSource::~AudioSource() {
    avformat_close_input(&container_);
}

void AudioSource::openContainer(const std::string& path) {
    const std::string url = asUrl(path);
    container_ = allocated(avformat_alloc_context());
    container_->interrupt_callback = {stopReading, &is_abandoned_};
    int result = avformat_open_input(&container_, url.c_str(), nullptr, nullptr);
    if (result >= 0) result = avformat_find_stream_info(container_, nullptr);
    throwIfInterrupted();
    if (result == AVERROR_INVALIDDATA) {
        throw Failure(ExitCode::InputNotReadable, "cannot open \"" + path + "\": unknown file format");
    }
    if (result < 0)
        throw Failure(ExitCode::InputNotReadable, "cannot open \"" + path + "\": " + errorText(result));
}

void AudioSource::chooseStream(const std::string& path, int stream_number) {
    int found = 0;
    for (unsigned i = 0; i < container_->nb_streams; ++i) {
        AVStream& stream = *container_->streams[i];
        stream.discard = AVDISCARD_ALL;
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
        if (found++ != stream_number) continue;
        stream.discard = AVDISCARD_DEFAULT;
        stream_index_ = static_cast<int>(i);
    }
    if (found == 0) throw Failure(ExitCode::NoAudio, "cannot open \"" + path + "\": it has no audio stream");
    if (stream_index_ < 0) {
        throw Failure(ExitCode::NoAudio, "cannot open \"" + path + "\": it has no audio stream " +
                                             std::to_string(stream_number) + ", only " +
                                             (found == 1 ? "0" : "0 to " + std::to_string(found - 1)));
    }
}

void AudioSource::openDecoder(const std::string& path) {
    const AVStream& audio = stream();
    const AVCodec* codec = avcodec_find_decoder(audio.codecpar->codec_id);
    if (codec == nullptr) {
        throw Failure(ExitCode::NoAudio, "cannot decode \"" + path +
                                             "\": there is no decoder for its audio (" +
                                             avcodec_get_name(audio.codecpar->codec_id) + ")");
    }
    decoder_.reset(allocated(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(decoder_.get(), audio.codecpar);
    // The decoder needs the time base to tell how much of the first and the last packet is padding.
    decoder_->pkt_timebase = audio.time_base;
    if (result >= 0) result = avcodec_open2(decoder_.get(), codec, nullptr);
    if (result < 0) throw Failure(ExitCode::NoAudio, "cannot decode \"" + path + "\": " + errorText(result));
}

void AudioSource::describe() {
    info_.container = container_->iformat->name;
    info_.codec = avcodec_get_name(decoder_->codec_id);
    info_.spec = specOf(*first_);
    const int bits = decoder_->bits_per_raw_sample;
    if (bits > 0 && bits < 8 * av_get_bytes_per_sample(info_.spec.format)) info_.bits_per_sample = bits;
    if (stream().duration != AV_NOPTS_VALUE && stream().duration > 0) {
        info_.length_seconds = static_cast<double>(stream().duration) * av_q2d(stream().time_base);
    } else if (container_->duration != AV_NOPTS_VALUE && container_->duration > 0) {
        info_.length_seconds = static_cast<double>(container_->duration) / AV_TIME_BASE;
    }
    converter_.emplace(info_.spec);
}

bool AudioSource::feedDecoder() {
    while (true) {
        throwIfInterrupted();
        const int result = av_read_frame(container_, packet_.get());
        throwIfInterrupted();
        if (result < 0) {
            // A file that breaks off is decoded up to that point, as a player does.
            if (result != AVERROR_EOF) ++decode_errors_;
            is_draining_ = true;
            return avcodec_send_packet(decoder_.get(), nullptr) >= 0;
        }
        const bool is_ours = packet_->stream_index == stream_index_;
        const int sent = is_ours ? avcodec_send_packet(decoder_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
        if (!is_ours) continue;
        if (sent == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (sent >= 0) return true;
        ++decode_errors_;
    }
}

FramePtr AudioSource::decode() {
    FramePtr frame(allocated(av_frame_alloc()));
    while (true) {
        const int result = avcodec_receive_frame(decoder_.get(), frame.get());
        if (result >= 0) {
            if (frame->nb_samples > 0 && frame->sample_rate > 0 && frame->ch_layout.nb_channels > 0)
                return frame;
            av_frame_unref(frame.get());
            continue;
        }
        if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (result == AVERROR_EOF) return nullptr;
        if (result != AVERROR(EAGAIN)) ++decode_errors_;
        if (is_draining_ || !feedDecoder()) return nullptr;
    }
}

FramePtr AudioSource::read() {
    while (true) {
        FramePtr frame = first_ != nullptr ? std::move(first_) : decode();
        if (frame == nullptr) return converter_->flush();
        FramePtr converted = converter_->convert(std::move(frame));
        if (converted != nullptr) return converted;
    }
}

}  // namespace sonivex_tool
