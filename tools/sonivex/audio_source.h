#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "audio_spec.h"
#include "format_converter.h"

namespace sonivex_tool {

/** What is known of an audio stream once its first frame is decoded. */
struct SourceInfo {
    std::string container;    // libavformat's name of the format
    std::string codec;        // libavcodec's name of the decoder
    AudioSpec spec;           // of the first frame, and of every frame that `read` returns
    int bits_per_sample = 0;  // that matter, when fewer than the format has (24 in an s32); else 0
    std::optional<double> length_seconds;  // as the container says; not to be relied on
};

/** The decoded frames of one audio stream of a file.
 *
 *  Damaged packets are skipped and counted, as players do. Frames that come in another rate, layout or format
 * than the first are converted to the first one's. */
class AudioSource {
  public:
    /** @param path a file or anything else that libavformat opens. @param stream_number among the audio
     * streams, from 0. @throw Failure (InputNotReadable, NoAudio, or that of a pending signal) */
    AudioSource(const std::string& path, int stream_number);
    ~AudioSource();
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    const SourceInfo& info() const { return info_; }

    /** The next frame, or null at the end. @throw Failure of a pending signal */
    FramePtr read();

    /** Packets and frames that did not decode so far, and a stream that broke off. */
    uint64_t decodeErrors() const { return decode_errors_; }

    const AVFormatContext& container() const { return *container_; }
    const AVStream& stream() const { return *container_->streams[stream_index_]; }

  private:
    void openContainer(const std::string& path);
    void chooseStream(const std::string& path, int stream_number);
    void openDecoder(const std::string& path);
    void describe();
    FramePtr decode();
    bool feedDecoder();

    AVFormatContext* container_ = nullptr;
    int stream_index_ = -1;
    CodecContextPtr decoder_;
    PacketPtr packet_;
    FramePtr first_;
    std::optional<FormatConverter> converter_;
    SourceInfo info_;
    uint64_t decode_errors_ = 0;
    bool is_draining_ = false;
};

}  // namespace sonivex_tool
