#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** Decodes the packets of one audio stream. Packets that fail to decode are counted and skipped. */
class AudioDecoder {
  public:
    /** Opens the decoder of a stream.
     * @param path of the file, for messages
     * @param stream outlives this object
     * @throw Failure (NoAudio), std::bad_alloc */
    AudioDecoder(const std::string& path, const AVStream& stream);

    /** Forgets everything that the packets so far have told about the audio, because one of them was wrong.
     * @throw as the constructor does */
    void restart();

    /** Forgets the packets so far, because others than the next ones follow. */
    void flush();

    /** Decodes a packet. Take all frames with `receive` before the next one. */
    void send(const AVPacket& packet);
    /** Ends the input; the frames that the decoder still holds follow. */
    void sendEnd();
    /** Returns the next frame of at least one sample, or null if the decoder needs another packet.
     * @throw std::bad_alloc */
    FramePtr receive();

    /** Packets and frames that have failed to decode so far. */
    uint64_t errors() const { return errors_; }
    /** Packets with data so far. */
    uint64_t packets() const { return packets_; }

    /** The decoder's state; owned by this object. */
    const AVCodecContext& context() const { return *context_; }

  private:
    std::string path_;
    const AVStream& stream_;
    CodecContextPtr context_;
    uint64_t errors_ = 0;
    uint64_t packets_ = 0;
};

/** Returns the position of a frame's first sample on the container's clock, in samples at the frame's rate.
 * @param time_base of the frame's pts
 * @return nothing if the frame has no pts, or one that no recording has */
std::optional<int64_t> positionOf(const AVFrame& frame, AVRational time_base);

}  // namespace sonivex_tool
