#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "audio_spec.h"
#include "format_converter.h"

namespace sonivex_tool {

/** What is known of an audio stream once its first frame is decoded. */
struct SourceInfo {
    std::string container;  ///< libavformat's name of the format
    std::string codec;      ///< libavcodec's name of the decoder
    AudioSpec spec;         ///< of the first frame, and of every frame that `read` returns
    int bitsPerSample = 0;  ///< that matter, when fewer than the format has (24 in an s32); else 0
    std::optional<double> lengthSeconds;  ///< as the container says; not to be relied on
};

/** The decoded frames of one audio stream of a file.
 *
 *  Damaged packets are skipped and counted, as players do. Frames that come in another rate, layout or format
 * than the first are converted to the first one's. */
class AudioSource {
  public:
    /** @param path a file or anything else that libavformat opens. @param streamNumber among the audio
     * streams, from 0. @throw Failure (InputNotReadable, NoAudio, or that of a pending signal) */
    AudioSource(const std::string& path, int streamNumber);
    ~AudioSource();
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    const SourceInfo& info() const { return mInfo; }

    /** The next frame, or null at the end. @throw Failure of a pending signal */
    FramePtr read();

    /** Packets and frames that did not decode so far, and a stream that broke off. */
    uint64_t decodeErrors() const { return mDecodeErrors; }

    const AVFormatContext& container() const { return *mContainer; }
    const AVStream& stream() const { return *mContainer->streams[mStreamIndex]; }

  private:
    void openContainer(const std::string& path);
    void chooseStream(const std::string& path, int streamNumber);
    void openDecoder(const std::string& path);
    void describe();
    FramePtr decode();
    bool feedDecoder();

    AVFormatContext* mContainer = nullptr;
    int mStreamIndex = -1;
    CodecContextPtr mDecoder;
    PacketPtr mPacket;
    FramePtr mFirst;
    std::optional<FormatConverter> mConverter;
    SourceInfo mInfo;
    uint64_t mDecodeErrors = 0;
    bool mIsDraining = false;
};

}  // namespace sonivex_tool
