#pragma once

#include <memory>
#include <span>
#include <string>

#include "audio_encoder.h"
#include "format_converter.h"

namespace sonivex_tool {

/** Sample rate of the sound in a page: Opus has no higher one, and browsers resample to their card's. */
inline constexpr int kPageRate_hz = 48000;

/** Returns true if libavcodec has an encoder of Opus. */
bool hasOpusEncoder();

/** Encodes stereo sound at kPageRate_hz as an Ogg file of Opus in memory. The same samples give the same
 *  bytes. */
class OpusSound {
  public:
    /** @throw Failure (OutputFormat) if there is no encoder or it refuses the rate; std::bad_alloc, from the
     *  members too */
    explicit OpusSound(int rate_bps);

    /** Encodes samples. @param samples [frames][2], full scale is 1 */
    void add(std::span<const float> samples);
    /** Returns the file. Call it once. */
    std::string finish();

  private:
    // Frees the muxer and what it has written.
    struct Closer {
        void operator()(AVFormatContext* muxer) const;
    };

    void write(AVPacket& packet);

    std::unique_ptr<AVFormatContext, Closer> muxer_;
    FormatConverter converter_;
    std::unique_ptr<AudioEncoder> encoder_;
};

}  // namespace sonivex_tool
