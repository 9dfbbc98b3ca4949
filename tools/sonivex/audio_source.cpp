#include "audio_source.h"

#include <filesystem>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

int stopReading(void* /*opaque*/) {
    return pendingSignal() != 0 ? 1 : 0;
}

/** A file is named as such, or a colon in its name would be taken for the end of a protocol. */
std::string asUrl(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) {
        throw Failure(ExitCode::InputNotReadable, path + ": is a folder");
    }
    return std::filesystem::exists(status) ? "file:" + path : path;
}

}  // namespace

AudioSource::AudioSource(const std::string& path, int streamNumber) {
    mPacket.reset(allocated(av_packet_alloc()));
    try {
        openContainer(path);
        chooseStream(path, streamNumber);
        openDecoder(path);
        mFirst = decode();
        if (mFirst == nullptr)
            throw Failure(ExitCode::NoAudio, path + ": nothing in the audio stream decodes");
        describe();
    } catch (...) {
        avformat_close_input(&mContainer);
        throw;
    }
}

AudioSource::~AudioSource() {
    avformat_close_input(&mContainer);
}

void AudioSource::openContainer(const std::string& path) {
    const std::string url = asUrl(path);
    mContainer = allocated(avformat_alloc_context());
    mContainer->interrupt_callback.callback = stopReading;
    int result = avformat_open_input(&mContainer, url.c_str(), nullptr, nullptr);
    if (result >= 0) result = avformat_find_stream_info(mContainer, nullptr);
    throwIfInterrupted();
    if (result == AVERROR_INVALIDDATA) {
        throw Failure(ExitCode::InputNotReadable, path + ": no known audio or video format");
    }
    if (result < 0) throw Failure(ExitCode::InputNotReadable, path + ": " + errorText(result));
}

void AudioSource::chooseStream(const std::string& path, int streamNumber) {
    int found = 0;
    for (unsigned i = 0; i < mContainer->nb_streams; ++i) {
        AVStream& stream = *mContainer->streams[i];
        stream.discard = AVDISCARD_ALL;
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
        if (found++ != streamNumber) continue;
        stream.discard = AVDISCARD_DEFAULT;
        mStreamIndex = static_cast<int>(i);
    }
    if (found == 0) throw Failure(ExitCode::NoAudio, path + ": has no audio stream");
    if (mStreamIndex < 0) {
        throw Failure(ExitCode::NoAudio, path + ": has no audio stream " + std::to_string(streamNumber) +
                                             ", only " +
                                             (found == 1 ? "0" : "0 to " + std::to_string(found - 1)));
    }
}

void AudioSource::openDecoder(const std::string& path) {
    const AVStream& audio = stream();
    const AVCodec* codec = avcodec_find_decoder(audio.codecpar->codec_id);
    if (codec == nullptr) {
        throw Failure(ExitCode::NoAudio, path + ": there is no decoder for its audio (" +
                                             avcodec_get_name(audio.codecpar->codec_id) + ")");
    }
    mDecoder.reset(allocated(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(mDecoder.get(), audio.codecpar);
    // Without it the decoder cannot tell how much of the first and the last packet is padding.
    mDecoder->pkt_timebase = audio.time_base;
    if (result >= 0) result = avcodec_open2(mDecoder.get(), codec, nullptr);
    if (result < 0)
        throw Failure(ExitCode::NoAudio, path + ": its audio cannot be decoded: " + errorText(result));
}

void AudioSource::describe() {
    mInfo.container = mContainer->iformat->name;
    mInfo.codec = avcodec_get_name(mDecoder->codec_id);
    mInfo.spec = specOf(*mFirst);
    const int bits = mDecoder->bits_per_raw_sample;
    if (bits > 0 && bits < 8 * av_get_bytes_per_sample(mInfo.spec.format)) mInfo.bitsPerSample = bits;
    if (stream().duration != AV_NOPTS_VALUE && stream().duration > 0) {
        mInfo.lengthSeconds = static_cast<double>(stream().duration) * av_q2d(stream().time_base);
    } else if (mContainer->duration != AV_NOPTS_VALUE && mContainer->duration > 0) {
        mInfo.lengthSeconds = static_cast<double>(mContainer->duration) / AV_TIME_BASE;
    }
    mConverter.emplace(mInfo.spec);
}

bool AudioSource::feedDecoder() {
    while (true) {
        throwIfInterrupted();
        const int result = av_read_frame(mContainer, mPacket.get());
        throwIfInterrupted();
        if (result < 0) {
            // A file that breaks off plays until there, as in a player.
            if (result != AVERROR_EOF) ++mDecodeErrors;
            mIsDraining = true;
            return avcodec_send_packet(mDecoder.get(), nullptr) >= 0;
        }
        const bool isOurs = mPacket->stream_index == mStreamIndex;
        const int sent = isOurs ? avcodec_send_packet(mDecoder.get(), mPacket.get()) : 0;
        av_packet_unref(mPacket.get());
        if (!isOurs) continue;
        if (sent == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (sent >= 0) return true;
        ++mDecodeErrors;
    }
}

FramePtr AudioSource::decode() {
    FramePtr frame(allocated(av_frame_alloc()));
    while (true) {
        const int result = avcodec_receive_frame(mDecoder.get(), frame.get());
        if (result >= 0) {
            if (frame->nb_samples > 0 && frame->sample_rate > 0 && frame->ch_layout.nb_channels > 0)
                return frame;
            av_frame_unref(frame.get());
            continue;
        }
        if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (result == AVERROR_EOF) return nullptr;
        if (result != AVERROR(EAGAIN)) ++mDecodeErrors;
        if (mIsDraining || !feedDecoder()) return nullptr;
    }
}

FramePtr AudioSource::read() {
    while (true) {
        FramePtr frame = mFirst != nullptr ? std::move(mFirst) : decode();
        if (frame == nullptr) return mConverter->flush();
        FramePtr converted = mConverter->convert(std::move(frame));
        if (converted != nullptr) return converted;
    }
}

}  // namespace sonivex_tool
