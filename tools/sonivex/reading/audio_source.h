#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "audio_spec.h"
#include "format_converter.h"
#include "input_settings.h"

namespace sonivex_tool {

/** Properties of an audio stream, known once its first frame is decoded. */
struct SourceInfo {
    std::string container;    // libavformat's name for the format
    std::string codec;        // libavcodec's name for the codec
    AudioSpec spec;           // of the first frame, and so of every frame that `read` returns
    int bits_per_sample = 0;  // significant bits if fewer than the format has (24 in s32), else 0
    std::optional<double> length_seconds;  // as the container states it; unreliable
};

/** Decodes one audio stream of a file.
 *
 * Damaged packets are skipped, as players do, and counted. Every frame is converted to the sample rate,
 * layout and format of the first one. */
class AudioSource {
  public:
    /** Opens the stream and decodes its first frame.
     * @throw Failure (InputNotReadable, NoAudio, or the exit code of a pending signal), std::bad_alloc */
    explicit AudioSource(const InputSettings& settings);
    ~AudioSource();
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    /** Properties of the stream. */
    const SourceInfo& info() const { return info_; }

    /** Returns the next frame, or null at the end of the stream.
     * @throw Failure with the exit code of a pending signal, or Internal when a conversion fails
     * @throw std::bad_alloc */
    FramePtr read();

    /** Makes `read` end soon, as if the file ended there. Any thread may call it. */
    void abandon() { is_abandoned_ = true; }

    /** Packets and frames that have failed to decode so far, plus one if reading broke off before the end. */
    uint64_t decodeErrors() const { return decode_errors_; }

    /** The opened file; owned by this object. */
    const AVFormatContext& container() const { return *container_; }
    /** The stream that is decoded; owned by this object. */
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
    std::atomic<bool> is_abandoned_ = false;
};

}  // namespace sonivex_tool
